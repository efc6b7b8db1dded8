#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "quoll/foundation/value.h"
#include "quoll/linux/posix/unique_fd.h"

/// Reading and writing descriptors. What fails leaves its reason in `errno`; a signal does not make
/// it fail.
namespace quoll::posix {

/// `open` and `openat`; what is opened is closed on exec. None with `errno` set.
[[nodiscard]] UniqueFd open_file(const std::string& path, int flags, mode_t mode = 0);
[[nodiscard]] UniqueFd open_file_at(int folder, const std::string& name, int flags,
                                    mode_t mode = 0);

/// Writes all of it, however often the system takes only a part; false with `errno` set.
[[nodiscard]] bool write_all(int descriptor, std::string_view bytes);
[[nodiscard]] bool write_all(int descriptor, std::span<const unsigned char> bytes);

/// Appends what is read until the end of the file or until `enough` bytes stand there;
/// false with `errno` set. `ended` tells whether the end was met. With `read_timeout` it fails with
/// ETIMEDOUT when nothing comes for that long, and when the deadline is past.
[[nodiscard]] bool read_until(
    int descriptor, std::string& text, std::size_t enough, bool& ended,
    std::optional<std::chrono::milliseconds> read_timeout = std::nullopt,
    std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max());
[[nodiscard]] bool read_until(int descriptor, foundation::Bytes& bytes, std::size_t enough,
                              bool& ended);

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
