#include "apps/share/report.h"

#include <algorithm>
#include <set>
#include <string>

#include "quoll/foundation/error.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/message/extension_message.h"

namespace quoll::share {

namespace {

using foundation::Error;
using foundation::NSURL;
using platform::LogEvent;
using recording::WrittenFile;

/// What the opened URL carries. The events of the items do not tell: an item may have been staged a
/// moment after the URL was made.
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
    const auto files = recording::events_of_kind<WrittenFile>(item.events());
    return std::any_of(files.begin(), files.end(),
                       [&](const WrittenFile& file) { return attachments_.contains(file.path); });
  }

 private:
  void read(const ExtensionMessage& message) {
    for (const foundation::Value& attachment : message.attachments()) {
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

bool is_own(const Error& error, foundation::QuollErrorCode code) {
  return error.domain == foundation::kQuollErrorDomain && error.code == code;
}

/// True for what the preparation of the staging folder logs.
bool is_about_folder(const LogEvent& event) {
  return event.error && (is_own(*event.error, foundation::kNotCoordinatedError) ||
                         is_own(*event.error, foundation::kNotPreparedError));
}

/// The events of a share by its stages, without those of its items.
struct Course {
  explicit Course(const std::vector<recording::Event>& events) {
    for (const recording::Event& event : events) {
      if (const auto* const logged = std::get_if<LogEvent>(&event)) {
        (opening ? launch : is_about_folder(*logged) ? preparation : work).push_back(*logged);
      } else if (const auto* const asked = std::get_if<recording::Opening>(&event)) {
        opening = *asked;
      } else if (const auto* const answer = std::get_if<recording::OpeningAnswer>(&event)) {
        is_opened = answer->is_opened;
      }
    }
  }

  /// What was logged about the staging folder, about the text, and by the launch.
  std::vector<LogEvent> preparation, work, launch;
  std::optional<recording::Opening> opening;
  bool is_opened = false;
};

bool is_missing_file(const Error& error) {
  return error.domain == foundation::NSCocoaErrorDomain &&
         error.code == foundation::NSFileNoSuchFileError;
}

/// True for a failure to stage an item that is no fault of the item.
bool is_failure_of_folder(const LogEvent& event, bool is_folder_in_trouble) {
  return event.error && (is_own(*event.error, foundation::kNotCoordinatedError) ||
                         (is_folder_in_trouble && is_missing_file(*event.error)));
}

std::string why_left_out(const SharedItem& item, bool is_folder_in_trouble) {
  const auto logged = recording::events_of_kind<LogEvent>(item.events());
  if (!logged.empty()) {
    return is_failure_of_folder(logged.back(), is_folder_in_trouble)
               ? "the shared folder cannot be used"
               : plain_reason(logged.back());
  }
  return item.state() == SharedItem::State::kNotAsked ? "it was not asked for" : "it took too long";
}

std::vector<LeftOut> everything_left_out(const Selection& selection, const Course& course,
                                         bool is_folder_in_trouble) {
  std::vector<LeftOut> all = selection.left_out;
  if ((selection.text || selection.html) && !course.work.empty()) {
    all.push_back({"the text", plain_reason(course.work.back())});
  }
  const Draft draft(course.opening->urls);
  for (const auto& item : selection.items) {
    if (!draft.holds(*item)) {
      all.push_back({item->given(), why_left_out(*item, is_folder_in_trouble)});
    }
  }
  return all;
}

/// Why the staging folder could not be prepared; none when it could. The very first share finds
/// nothing to delete, which is no trouble.
std::optional<std::string> staging_trouble(const std::vector<LogEvent>& preparation) {
  for (const LogEvent& event : preparation) {
    const Error* const reason = event.error->underlying();
    const bool is_missing = reason != nullptr && is_missing_file(*reason);
    if (is_own(*event.error, foundation::kNotCoordinatedError)) {
      return is_missing ? "there is none" : plain_reason(event);
    }
    if (!is_missing) {
      return plain_reason(event);
    }
  }
  return std::nullopt;
}

/// True when something was staged. Then the folder can be used, even if files of earlier shares
/// could not be deleted.
bool was_used(const Selection& selection) {
  return std::any_of(selection.items.begin(), selection.items.end(), [](const auto& item) {
    return !recording::events_of_kind<WrittenFile>(item->events()).empty();
  });
}

std::string why_not_opened(const Selection& selection, const Course& course) {
  if (selection.empty()) {
    return "nothing that was given can be shared";
  }
  const std::vector<LogEvent>& logged = course.opening ? course.launch : course.work;
  return logged.empty() ? "the system log tells more" : plain_reason(logged.back());
}

}  // namespace

std::string plain_reason(const LogEvent& event) {
  if (!event.error) {
    return foundation::printable(event.text);
  }
  const Error* cause = &*event.error;
  while (const Error* const beneath = cause->underlying()) {
    cause = beneath;
  }
  if (cause->domain == foundation::NSPOSIXErrorDomain) {
    return cause->code == 0 ? "unknown error" : posix::error_words(cause->code);
  }
  return foundation::printable(cause->text.empty()
                                   ? foundation::format("%@ Code=%i", cause->domain, cause->code)
                                   : cause->text);
}

ExitCode report(const Selection& selection, const std::vector<recording::Event>& events,
                std::ostream& out) {
  const Course course(events);
  const auto trouble = was_used(selection) ? std::nullopt : staging_trouble(course.preparation);
  const auto left_out = course.is_opened
                            ? everything_left_out(selection, course, trouble.has_value())
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
  if (!course.is_opened) {
    out << "not opened: " << why_not_opened(selection, course) << '\n';
  }
  out.flush();
  if (!course.is_opened) {
    return ExitCode::kNotOpened;
  }
  return left_out.empty() ? ExitCode::kOpened : ExitCode::kSomethingLeftOut;
}

}  // namespace quoll::share
