#include "quoll/linux/image_helper/descriptors.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace quoll::image_helper {

namespace {

constexpr int kSeals = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
/// Of Linux 6.3: it can never be started as a program. It comes with a seal of its own.
constexpr unsigned kNotExecutable = 8;

/// The same, with a number above 2.
Descriptor above_standard_streams(Descriptor descriptor) {
  if (!descriptor.good() || descriptor.get() > STDERR_FILENO) {
    return descriptor;
  }
  return Descriptor(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace

Descriptor::~Descriptor() {
  if (good()) {
    close(number_);
  }
}

Mapping::Mapping(int descriptor, std::size_t length) : length_(length) {
  start_ = mmap(nullptr, length, PROT_READ, MAP_PRIVATE, descriptor, 0);
  if (start_ == MAP_FAILED) {
    start_ = nullptr;
    length_ = 0;
  }
}

Mapping::~Mapping() {
  if (start_ != nullptr) {
    munmap(start_, length_);
  }
}

Descriptor make_memory_file() {
  constexpr unsigned kFlags = MFD_CLOEXEC | MFD_ALLOW_SEALING;
  Descriptor file(memfd_create("quoll-image", kFlags | kNotExecutable));
  if (!file.good() && errno == EINVAL) {
    file = Descriptor(memfd_create("quoll-image", kFlags));
  }
  return above_standard_streams(std::move(file));
}

bool fill_and_seal(const Descriptor& file, std::span<const unsigned char> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file.get(), bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) {
      return false;
    }
    bytes = bytes.subspan(written < 0 ? 0 : static_cast<std::size_t>(written));
  }
  return lseek(file.get(), 0, SEEK_SET) == 0 && fcntl(file.get(), F_ADD_SEALS, kSeals) == 0;
}

void seal(int descriptor) {
  fcntl(descriptor, F_ADD_SEALS, kSeals);
}

bool is_sealed(int descriptor) {
  const int seals = fcntl(descriptor, F_GET_SEALS);
  return seals >= 0 && (seals & kSeals) == kSeals;
}

std::pair<Descriptor, Descriptor> make_pipe() {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return {Descriptor(), Descriptor()};
  }
  Descriptor reading = above_standard_streams(Descriptor(ends[0]));
  Descriptor writing = above_standard_streams(Descriptor(ends[1]));
  fcntl(reading.get(), F_SETFL, O_NONBLOCK);
  return {std::move(reading), std::move(writing)};
}

}  // namespace quoll::image_helper
