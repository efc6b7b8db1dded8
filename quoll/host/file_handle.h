#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quoll::host {

/// Owns a file descriptor; -1 is none.
class FileHandle {
 public:
  explicit FileHandle(int descriptor = -1) : descriptor_(descriptor) {}
  FileHandle(FileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileHandle& operator=(FileHandle&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~FileHandle() { reset(); }

  void reset();
  [[nodiscard]] int get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }

 private:
  int descriptor_;
};

/// Writes all of it, however often the system takes only a part; false with `errno` set.
[[nodiscard]] bool write_all(int descriptor, std::string_view bytes);

/// Appends what is read until the end of the file or until `text` has at least `enough` bytes;
/// false with `errno` set. `ended` tells whether the end was met. With `patience` it fails with
/// ETIMEDOUT when nothing comes for that long, and when the deadline is past.
[[nodiscard]] bool read_until(
    int descriptor, std::string& text, std::size_t enough, bool& ended,
    std::optional<std::chrono::milliseconds> patience = std::nullopt,
    std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max());

/// What an `errno` value means, in small letters, to follow a colon.
[[nodiscard]] std::string error_words(int number);

}  // namespace quoll::host
