#include "apps/share/notice.h"

#include <algorithm>
#include <functional>
#include <vector>

#include "apps/share/exit_code.h"
#include "apps/share/result.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/gio/launcher.h"

namespace quoll::share {

namespace {

void replace_all(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
    text.replace(at, from.size(), to);
    at += to.size();
  }
}

/// Why nothing was opened, without the names that programs have among themselves and without what
/// is advice at a terminal alone.
std::string in_words_for_people(std::string_view reason) {
  std::string text(reason);
  const std::string doctor = std::string("; ") + kTryDoctor;
  if (text.ends_with(doctor)) {
    text.resize(text.size() - doctor.size());
  }
  std::vector<std::string> editions(gio::kEditions.begin(), gio::kEditions.end());
  std::ranges::sort(editions, std::greater());  // a name may be the beginning of another
  for (const std::string& id : editions) {
    replace_all(text, "no application answers to " + id, "no mail application answers");
    replace_all(text, id + ".desktop", "the entry of the mail application");
    replace_all(text, id, "the mail application");
  }
  return text;
}

/// A line of a report as a sentence of a notification.
std::string sentence_of(std::string_view line) {
  constexpr std::string_view kNotOpened = "not opened: ";
  std::string sentence = line.starts_with(kNotOpened)
                             ? in_words_for_people(line.substr(kNotOpened.size()))
                             : std::string(line);
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
