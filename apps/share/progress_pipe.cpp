#include "apps/share/progress_pipe.h"

#include <fcntl.h>

#include <charconv>
#include <string>

#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {

Progress progress_to(int pipe) {
  fcntl(pipe, F_SETFL, O_NONBLOCK);
  return [pipe](std::size_t done, std::size_t steps) {
    static_cast<void>(
        posix::write_all(pipe, std::to_string(done) + " " + std::to_string(steps) + "\n"));
  };
}

bool has_turn(std::string_view lines) {
  const std::size_t end = lines.rfind('\n');
  if (end == std::string_view::npos) {
    return false;
  }
  std::string_view line = lines.substr(0, end);
  line.remove_prefix(line.rfind('\n') + 1);  // npos + 1 is 0
  std::size_t done = 0;
  std::size_t steps = 0;
  const char* const last = line.data() + line.size();
  const auto space = std::from_chars(line.data(), last, done).ptr;
  return space != last && *space == ' ' &&
         std::from_chars(space + 1, last, steps).ec == std::errc() && done >= steps - steps / 2;
}

}  // namespace quoll::share
