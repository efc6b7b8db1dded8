#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace quoll::fuzz {

/// Decisions that are read from the bytes of an input. When the bytes have run out, they are read
/// as zeros.
class Script {
 public:
  explicit Script(std::span<const std::uint8_t> bytes) : left_(bytes) {}

  [[nodiscard]] bool goes_on() const { return !left_.empty(); }

  std::uint8_t byte() { return number<std::uint8_t>(); }
  /// One of `count` choices, counted from 0.
  unsigned choice(unsigned count) { return byte() % count; }
  /// A number in the machine's byte order.
  template <typename Number>
  Number number() {
    Number value = 0;
    const std::size_t there = std::min(sizeof value, left_.size());
    std::memcpy(&value, left_.data(), there);
    left_ = left_.subspan(there);
    return value;
  }
  /// A text shorter than `limit`; the first byte decides how long it is.
  std::string_view text(unsigned limit = 32) { return taken(byte() % limit); }
  std::string_view rest() { return taken(left_.size()); }

 private:
  std::string_view taken(std::size_t wanted) {
    const std::size_t length = std::min(wanted, left_.size());
    const std::string_view result(reinterpret_cast<const char*>(left_.data()), length);
    left_ = left_.subspan(length);
    return result;
  }

  std::span<const std::uint8_t> left_;
};

}  // namespace quoll::fuzz
