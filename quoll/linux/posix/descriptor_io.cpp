#include "quoll/linux/posix/descriptor_io.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace quoll::posix {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// Waits until there is something to read, or the end; false when it takes too long.
bool comes_in_time(int descriptor, milliseconds patience, steady_clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<milliseconds>(deadline - steady_clock::now());
  pollfd waiting{descriptor, POLLIN, 0};
  return left.count() > 0 &&
         poll(&waiting, 1, static_cast<int>(std::min(patience, left).count())) != 0;
}

}  // namespace

bool write_all(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
  }
  return true;
}

bool read_until(int descriptor, std::string& text, std::size_t enough, bool& ended,
                std::optional<milliseconds> patience, steady_clock::time_point deadline) {
  constexpr std::size_t kLargestRead = std::size_t{1} << 20;
  ended = false;
  while (!ended && text.size() < enough) {
    if (patience && !comes_in_time(descriptor, *patience, deadline)) {
      errno = ETIMEDOUT;
      return false;
    }
    const std::size_t before = text.size();
    text.resize(before + std::min(kLargestRead, enough - before));
    const ssize_t got = read(descriptor, text.data() + before, text.size() - before);
    const int number = errno;
    text.resize(before + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    const bool is_early = number == EINTR || (patience && number == EAGAIN);
    if (got < 0 && !is_early) {
      errno = number;
      return false;
    }
    ended = got == 0;
  }
  return true;
}

std::string error_words(int number) {
  std::string words = std::generic_category().message(number);
  // "Input/output error" becomes a part of a sentence; what begins with an abbreviation stays.
  if (words.size() > 1 && words[0] >= 'A' && words[0] <= 'Z' &&
      !(words[1] >= 'A' && words[1] <= 'Z')) {
    words[0] = static_cast<char>(words[0] + ('a' - 'A'));
  }
  return words;
}

}  // namespace quoll::posix
