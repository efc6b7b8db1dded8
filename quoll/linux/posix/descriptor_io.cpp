#include "quoll/linux/posix/descriptor_io.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>
#include <utility>

#include "quoll/foundation/text.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::posix {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

bool wait_until_readable(int descriptor, steady_clock::time_point deadline) {
  pollfd waiting{descriptor, POLLIN, 0};
  const int ready = uninterrupted([&] {
    constexpr milliseconds::rep kLongest = std::numeric_limits<int>::max();
    const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now()).count();
    return poll(&waiting, 1, static_cast<int>(std::clamp<milliseconds::rep>(left, 0, kLongest)));
  });
  if (ready == 0) {
    errno = ETIMEDOUT;
  }
  return ready > 0;
}

bool write_all(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written =
        uninterrupted([&] { return write(descriptor, bytes.data(), bytes.size()); });
    if (written <= 0) {
      errno = written < 0 ? errno : EIO;
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool write_all(int descriptor, std::span<const unsigned char> bytes) {
  return write_all(descriptor,
                   std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

bool read_until(int descriptor, std::string& text, std::size_t enough, bool& ended,
                std::optional<milliseconds> read_timeout, steady_clock::time_point deadline) {
  constexpr std::size_t kLargestRead = std::size_t{1} << 20;
  ended = false;
  while (!ended && text.size() < enough) {
    if (read_timeout &&
        !wait_until_readable(descriptor, std::min(steady_clock::now() + *read_timeout, deadline))) {
      return false;
    }
    const std::size_t before = text.size();
    text.resize(before + std::min(kLargestRead, enough - before));
    const ssize_t got =
        uninterrupted([&] { return read(descriptor, text.data() + before, text.size() - before); });
    const int number = errno;
    text.resize(before + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    if (got < 0 && !(read_timeout && number == EAGAIN)) {
      errno = number;
      return false;
    }
    ended = got == 0;
  }
  return true;
}

UniqueFd above_standard_streams(UniqueFd descriptor) {
  if (!descriptor || descriptor.get() > STDERR_FILENO) {
    return descriptor;
  }
  return UniqueFd(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

Pipe make_pipe() {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return {};
  }
  Pipe pipe{UniqueFd(ends[0]), UniqueFd(ends[1])};
  pipe.reading = above_standard_streams(std::move(pipe.reading));
  pipe.writing = above_standard_streams(std::move(pipe.writing));
  return pipe;
}

std::string error_words(int number) {
  std::string words = std::generic_category().message(number);
  // "Input/output error" becomes a part of a sentence; what begins with an abbreviation stays.
  if (words.size() > 1 && foundation::ascii_lower_case(words[1]) == words[1]) {
    words[0] = foundation::ascii_lower_case(words[0]);
  }
  return words;
}

}  // namespace quoll::posix
