#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace quoll::share {

/// Parts of any bytes but zero, each ended by a zero byte; the last one may go without.
class ZeroEndedList {
 public:
  explicit ZeroEndedList(std::string bytes) : bytes_(std::move(bytes)) {}

  /// The next part; none behind the last.
  [[nodiscard]] std::optional<std::string> next() {
    if (position_ >= bytes_.size()) {
      return std::nullopt;
    }
    const std::size_t end = std::min(bytes_.find('\0', position_), bytes_.size());
    const std::size_t begin = std::exchange(position_, end + 1);
    return bytes_.substr(begin, end - begin);
  }

 private:
  std::string bytes_;
  std::size_t position_ = 0;
};

}  // namespace quoll::share
