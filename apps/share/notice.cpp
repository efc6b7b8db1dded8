#include "apps/share/notice.h"

#include "apps/share/report.h"

namespace quoll::share {

Notice notice_of(int code, std::string_view told) {
  constexpr std::size_t kMost = 1000;
  const std::string shown = shown_report(told, kMost).value_or("");
  const bool is_opened = code == static_cast<int>(ExitCode::kSomethingLeftOut);
  return {is_opened ? "Not everything is in the draft" : "Nothing was shared",
          shown.empty() ? "The system log tells more." : shown};
}

}  // namespace quoll::share
