#include "apps/share/report.h"

#include <algorithm>
#include <set>
#include <string>

#include "apps/share/plain_reason.h"
#include "quoll/foundation/error.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/message/extension_message.h"

namespace quoll::share {

namespace {

using foundation::NSURL;

/// What the opened URL really carries. The items' own memory does not tell: one may have been
/// staged a moment after the URL was made.
class Draft {
 public:
  explicit Draft(const std::vector<std::shared_ptr<NSURL>>& urls) {
    for (const auto& url : urls) {
      read(*ExtensionMessage::ExtensionMessageWithUrl(url));
    }
  }

  [[nodiscard]] bool holds(const SharedItem& item) const {
    if (const auto link = item.value().as<NSURL>(); link && !link->isFileURL()) {
      return links_.contains(link->absoluteString());
    }
    const auto files = item.witness().files();
    return std::any_of(files.begin(), files.end(),
                       [&](const std::string& path) { return attachments_.contains(path); });
  }

 private:
  void read(const ExtensionMessage& message) {
    for (const foundation::Value& attachment : *message.attachments()) {
      if (const std::string* path = attachment.text()) {
        attachments_.insert(*path);
      }
    }
    constexpr std::string_view kAnchor = "<a href=\"";
    const foundation::Value body = message.htmlBody();
    const std::string_view html = body.text() != nullptr ? std::string_view(*body.text()) : "";
    for (std::size_t at = html.find(kAnchor); at != std::string_view::npos;
         at = html.find(kAnchor, at)) {
      at += kAnchor.size();
      links_.emplace(html.substr(at, html.find('"', at) - at));
    }
  }

  std::set<std::string, std::less<>> attachments_;
  std::set<std::string, std::less<>> links_;
};

/// True for the failure of an item that says nothing about the item: nobody could have staged it.
bool is_failure_of_folder(std::string_view line, bool is_folder_in_trouble) {
  return line.starts_with("Error shareFiles ") || line.starts_with("Error shareDatas ") ||
         (is_folder_in_trouble && error_code(line) == foundation::NSFileNoSuchFileError);
}

std::string why_left_out(const SharedItem& item, bool is_folder_in_trouble) {
  const auto lines = item.witness().lines();
  if (!lines.empty()) {
    return is_failure_of_folder(lines.back(), is_folder_in_trouble)
               ? "the shared folder cannot be used"
               : plain_reason(lines.back());
  }
  return item.state() == SharedItem::State::kNotAsked ? "it was not asked for" : "it took too long";
}

std::vector<LeftOut> everything_left_out(const Selection& selection, const Outcome& outcome,
                                         const WatchedWorkspace::Opening& opening,
                                         bool is_folder_in_trouble) {
  std::vector<LeftOut> all = selection.left_out;
  if ((selection.text || selection.html) && !outcome.background.empty()) {
    all.push_back({"the text", plain_reason(outcome.background.back())});
  }
  const Draft draft(opening.urls);
  for (const auto& item : selection.items) {
    if (!draft.holds(*item)) {
      all.push_back({item->given(), why_left_out(*item, is_folder_in_trouble)});
    }
  }
  return all;
}

/// Why the staging folder could not be prepared; none when it could. On the very first share there
/// is nothing to delete, and that is no trouble.
std::optional<std::string> staging_trouble(const std::vector<std::string>& preparation) {
  for (const std::string& line : preparation) {
    const bool is_coordination = line.starts_with("shareInit Error ");
    const bool is_folder =
        line.starts_with("shareInit ") && error_code(line) != foundation::NSFileNoSuchFileError;
    if (is_coordination && error_code(line) == foundation::NSFileNoSuchFileError) {
      return "there is none";
    }
    if (is_coordination || is_folder) {
      return plain_reason(line);
    }
  }
  return std::nullopt;
}

/// True when something was staged: then the folder could be used, whatever went wrong with what
/// earlier shares had left in it.
bool was_used(const Selection& selection) {
  return std::any_of(selection.items.begin(), selection.items.end(),
                     [](const auto& item) { return !item->witness().files().empty(); });
}

std::string why_not_opened(const Selection& selection, const Outcome& outcome,
                           const std::optional<WatchedWorkspace::Opening>& opening) {
  if (selection.empty()) {
    return "nothing that was given can be shared";
  }
  const std::vector<std::string>& lines = opening ? opening->lines : outcome.background;
  return lines.empty() ? "the system log tells more" : plain_reason(lines.back());
}

}  // namespace

ExitCode report(const Selection& selection, const Outcome& outcome,
                const WatchedWorkspace& workspace, std::ostream& out) {
  const auto opening = workspace.opening();
  const bool is_opened = opening && opening->is_opened;
  const auto trouble = was_used(selection) ? std::nullopt : staging_trouble(outcome.preparation);
  const auto left_out = is_opened
                            ? everything_left_out(selection, outcome, *opening, trouble.has_value())
                            : selection.left_out;
  for (const LeftOut& left : left_out) {
    out << "left out: " << (left.what.empty() ? "\"\"" : foundation::printable(left.what)) << ": "
        << left.why << '\n';
  }
  if (trouble) {
    out << "the shared folder cannot be used: " << *trouble
        << "; see that your data folder, or the one that QUOLL_GROUP_CONTAINERS names, can be "
           "written\n";
  }
  if (!is_opened) {
    out << "not opened: " << why_not_opened(selection, outcome, opening) << '\n';
  }
  out.flush();
  if (!is_opened) {
    return ExitCode::kNotOpened;
  }
  return left_out.empty() ? ExitCode::kOpened : ExitCode::kSomethingLeftOut;
}

std::optional<std::string> shown_report(std::string_view told, std::size_t most) {
  told = foundation::trim(told);
  const bool is_long = told.size() > most;
  if (is_long) {
    told = told.substr(0, std::min(told.rfind('\n', most), most));
  }
  if (told.find('\0') != std::string_view::npos || !foundation::is_utf8(told)) {
    return std::nullopt;
  }
  return std::string(told) + (is_long ? "\n..." : "");
}

}  // namespace quoll::share
