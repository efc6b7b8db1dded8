#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace quoll::posix {

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

}  // namespace quoll::posix
