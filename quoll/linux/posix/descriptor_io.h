#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "quoll/linux/posix/unique_fd.h"

/// Reading and writing descriptors. What fails leaves its reason in `errno`; a signal does not make
/// it fail.
namespace quoll::posix {

/// Writes all of it, however often the system takes only a part; false with `errno` set.
[[nodiscard]] bool write_all(int descriptor, std::string_view bytes);
[[nodiscard]] bool write_all(int descriptor, std::span<const unsigned char> bytes);

/// Appends what is read until the end of the file or until `text` has at least `enough` bytes;
/// false with `errno` set. `ended` tells whether the end was met. With `read_timeout` it fails with
/// ETIMEDOUT when nothing comes for that long, and when the deadline is past.
[[nodiscard]] bool read_until(
    int descriptor, std::string& text, std::size_t enough, bool& ended,
    std::optional<std::chrono::milliseconds> read_timeout = std::nullopt,
    std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max());

/// Waits until there is something to read or the end is met; false with `errno` set, ETIMEDOUT when
/// it takes until the deadline.
[[nodiscard]] bool wait_until_readable(int descriptor,
                                       std::chrono::steady_clock::time_point deadline);

/// A program may be started with its standard descriptors closed. A new descriptor then gets one of
/// their numbers, and would be taken for standard input. This answers the same with a higher
/// number; none, with `errno` set, when there is none to be had.
[[nodiscard]] UniqueFd above_standard_streams(UniqueFd descriptor);

/// Both ends are closed on exec and above the standard streams.
struct Pipe {
  UniqueFd reading;
  UniqueFd writing;
  explicit operator bool() const { return reading && writing; }
};
/// Empty, with `errno` set, when there can be none.
[[nodiscard]] Pipe make_pipe();

/// What an `errno` value means, in small letters, to follow a colon.
[[nodiscard]] std::string error_words(int number);

}  // namespace quoll::posix
