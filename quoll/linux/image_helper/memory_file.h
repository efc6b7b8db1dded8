#pragma once

#include <cstddef>
#include <span>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::image_helper {

/// The bytes of a file in memory, only to be read.
class Mapping {
 public:
  /// Maps the first `length` bytes; `good` is false, and `errno` set, when that fails.
  Mapping(int descriptor, std::size_t length);
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;
  ~Mapping();

  [[nodiscard]] bool good() const { return start_ != nullptr; }
  [[nodiscard]] std::span<const unsigned char> bytes() const& {
    return {static_cast<const unsigned char*>(start_), length_};
  }
  std::span<const unsigned char> bytes() const&& = delete;

 private:
  void* start_;
  std::size_t length_;
};

/// A new file without a name, in memory. It is closed on exec and its number is above those of the
/// standard streams, so that it can be put in their place; none, with `errno` set, when it fails.
[[nodiscard]] posix::UniqueFd make_memory_file();

/// Writes all bytes and seals the file: nobody can change it from then on. False with `errno`.
[[nodiscard]] bool fill_and_seal(int file, std::span<const unsigned char> bytes);

/// Seals a memory file as it is, which tells its reader that it is whole. Another kind of file is
/// left alone.
void seal(int descriptor);
[[nodiscard]] bool is_sealed(int descriptor);

}  // namespace quoll::image_helper
