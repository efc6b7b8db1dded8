// Runs a fuzz target on files, and on copies of each that are cut short or have changed bytes. The
// number of copies is limited to keep the run short.
//
// Usage: fuzz_NAME FOLDER

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// A target may define this, to be called once.
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace {

using Bytes = std::vector<std::uint8_t>;

void replay(const Bytes& bytes) {
  // A copy of exactly this size, so that the sanitizers notice any read past its end.
  const auto exact = std::make_unique<std::uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), exact.get());
  LLVMFuzzerTestOneInput(exact.get(), bytes.size());
}

void replay_with_damage(const Bytes& bytes, std::size_t places) {
  const std::size_t step = bytes.size() / places + 1;
  for (std::size_t place = 0; place < bytes.size(); place += step) {
    replay(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(place)));
    for (const unsigned change : {0x01U, 0x20U, 0x80U, 0xFFU}) {
      Bytes damaged = bytes;
      damaged[place] = static_cast<std::uint8_t>(damaged[place] ^ change);
      replay(damaged);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (LLVMFuzzerInitialize != nullptr) {
    LLVMFuzzerInitialize(&argc, &argv);
  }
  constexpr std::size_t kPlacesOfAll = 128;
  std::vector<Bytes> files;
  for (const auto& entry : std::filesystem::directory_iterator(argc == 2 ? argv[1] : "")) {
    std::ifstream file(entry.path(), std::ios::binary);
    files.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  for (const Bytes& bytes : files) {
    replay(bytes);
    replay_with_damage(bytes, kPlacesOfAll / files.size() + 1);
  }
  std::cout << files.size() << " files\n";
  return files.empty() ? 1 : 0;
}
