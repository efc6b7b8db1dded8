#include "quoll/linux/image_helper/memory_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::image_helper {

namespace {

constexpr int kSeals = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
/// Of Linux 6.3: it can never be started as a program. It comes with a seal of its own.
constexpr unsigned kNotExecutable = 8;

}  // namespace

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

posix::UniqueFd make_memory_file() {
  constexpr unsigned kFlags = MFD_CLOEXEC | MFD_ALLOW_SEALING;
  posix::UniqueFd file(memfd_create("quoll-image", kFlags | kNotExecutable));
  if (!file && errno == EINVAL) {
    file.reset(memfd_create("quoll-image", kFlags));
  }
  return posix::above_standard_streams(std::move(file));
}

bool fill_and_seal(int file, std::span<const unsigned char> bytes) {
  return posix::write_all(file, bytes) && lseek(file, 0, SEEK_SET) == 0 &&
         fcntl(file, F_ADD_SEALS, kSeals) == 0;
}

void seal(int descriptor) {
  fcntl(descriptor, F_ADD_SEALS, kSeals);
}

bool is_sealed(int descriptor) {
  const int seals = fcntl(descriptor, F_GET_SEALS);
  return seals >= 0 && (seals & kSeals) == kSeals;
}

}  // namespace quoll::image_helper
