#include "apps/share/notice.h"

#include <algorithm>

#include "apps/share/exit_code.h"
#include "apps/share/result.h"
#include "quoll/foundation/text.h"

namespace quoll::share {

namespace {

/// Without what is advice at a terminal alone.
std::string without_command(std::string text) {
  const std::string command = std::string("; ") + kTryDoctor;
  for (std::size_t at = text.find(command); at != std::string::npos; at = text.find(command, at)) {
    text.erase(at, command.size());
  }
  return text;
}

/// A line of a report as a sentence of a notification.
std::string sentence_of(std::string_view line) {
  constexpr std::string_view kNotOpened = "not opened: ";
  std::string sentence(line.substr(line.starts_with(kNotOpened) ? kNotOpened.size() : 0));
  if (!sentence.empty() && sentence[0] >= 'a' && sentence[0] <= 'z') {
    sentence[0] = static_cast<char>(sentence[0] - 'a' + 'A');
  }
  return sentence;
}

}  // namespace

Notice notice_of(int code, std::string_view told) {
  constexpr std::size_t kMost = 1000;
  const std::string shown = shown_report(told, kMost).value_or("");
  std::string body;
  for (std::string_view rest = shown; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    body += (body.empty() ? "" : "\n") + sentence_of(line);
  }
  const bool is_opened = code == static_cast<int>(ExitCode::kSomethingLeftOut);
  return {is_opened ? "Not everything is in the draft" : "Nothing was shared",
          body.empty() ? "It ended without a reason; try it once more." : body};
}

Notice notice_of_waiting(std::string_view line) {
  return {"Another share is not finished yet", sentence_of(line)};
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
  return without_command(std::string(told)) + (is_long ? "\n..." : "");
}

}  // namespace quoll::share
