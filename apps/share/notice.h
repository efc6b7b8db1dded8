#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quoll::share {

/// What the desktop shows of a share that did not go well.
struct Notice {
  std::string title;
  std::string body;
};

/// The notice for a share that ended with this number and told this. The body
/// holds as many whole lines of it as a notification has room for.
[[nodiscard]] Notice notice_of(int code, std::string_view told);

/// The notice for a share that waits for another one, which told this line of it.
[[nodiscard]] Notice notice_of_waiting(std::string_view line);

/// What a share told, to be shown where there is no terminal to try commands: as
/// many whole lines as `most` bytes hold, and
/// "..." for the rest. A first line that is longer is cut between two characters. None when it is
/// not text: the share has had other people's bytes in its hands.
[[nodiscard]] std::optional<std::string> shown_report(std::string_view told, std::size_t most);

}  // namespace quoll::share
