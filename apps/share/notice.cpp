#include "apps/share/notice.h"

#include <algorithm>

#include "apps/share/exit_code.h"
#include "quoll/foundation/text.h"

namespace quoll::share {

Notice notice_of(int code, std::string_view told) {
  constexpr std::size_t kMost = 1000;
  const std::string shown = shown_report(told, kMost).value_or("");
  const bool is_opened = code == static_cast<int>(ExitCode::kSomethingLeftOut);
  return {is_opened ? "Not everything is in the draft" : "Nothing was shared",
          shown.empty() ? "The system log tells more." : shown};
}

std::optional<std::string> shown_report(std::string_view told, std::size_t most) {
  told = foundation::trim(told);
  const bool is_long = told.size() > most;
  if (is_long) {
    told = foundation::whole_characters(told, std::min(told.rfind('\n', most), most));
  }
  if (told.find('\0') != std::string_view::npos || !foundation::is_utf8(told)) {
    return std::nullopt;
  }
  return std::string(told) + (is_long ? "\n..." : "");
}

}  // namespace quoll::share
