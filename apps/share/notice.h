#pragma once

#include <string>
#include <string_view>

namespace quoll::share {

/// What the desktop shows of a share that did not go well.
struct Notice {
  std::string title;
  std::string body;
};

/// The notice for a share that ended with this number and told this on standard error: as many
/// whole lines as a notification has room for.
[[nodiscard]] Notice notice_of(int code, std::string_view told);

}  // namespace quoll::share
