#pragma once

#include <cstddef>
#include <span>
#include <utility>

namespace quoll::image_helper {

/// An open descriptor, closed with its owner; -1 is none.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor();

  [[nodiscard]] int get() const { return number_; }
  [[nodiscard]] bool good() const { return number_ >= 0; }

 private:
  int number_;
};

/// The bytes of a file in memory, only to be read.
class Mapping {
 public:
  /// Maps the first `length` bytes; `good` is false, and `errno` set, when that fails.
  Mapping(int descriptor, std::size_t length);
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;
  ~Mapping();

  [[nodiscard]] bool good() const { return start_ != nullptr; }
  [[nodiscard]] std::span<const unsigned char> bytes() const {
    return {static_cast<const unsigned char*>(start_), length_};
  }

 private:
  void* start_;
  std::size_t length_;
};

/// A new file without a name, in memory. It is closed on exec and its number is above those of the
/// standard streams, so that it can be put in their place; none, with `errno` set, when it fails.
[[nodiscard]] Descriptor make_memory_file();

/// Writes all bytes and seals the file: nobody can change it from then on. False with `errno`.
[[nodiscard]] bool fill_and_seal(const Descriptor& file, std::span<const unsigned char> bytes);

/// Seals a memory file as it is, which tells its reader that it is whole. Another kind of file is
/// left alone.
void seal(int descriptor);
[[nodiscard]] bool is_sealed(int descriptor);

/// A pipe with the reading end first and never waiting; both are as `make_memory_file` says.
[[nodiscard]] std::pair<Descriptor, Descriptor> make_pipe();

}  // namespace quoll::image_helper
