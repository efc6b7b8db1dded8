#include "apps/share/result.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "quoll/foundation/error.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/gio/launcher.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/type_identifiers.h"

namespace quoll::share {

namespace {

using foundation::Error;
using foundation::NSURL;
using platform::LogEvent;
using recording::WrittenFile;
using Urls = std::vector<std::shared_ptr<NSURL>>;

/// What the opened URL carries. The events of the items do not tell: an item may have been staged a
/// moment after the URL was made.
class Draft {
 public:
  explicit Draft(const Urls& urls) {
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

  /// The last event that tells of the text; null when there is none. What has an error is about
  /// something else, such as a thread too few.
  [[nodiscard]] const LogEvent* trouble_with_text() const {
    const auto last = std::find_if(work.rbegin(), work.rend(),
                                   [](const LogEvent& event) { return !event.error; });
    return last == work.rend() ? nullptr : &*last;
  }

  /// True when the items were gathered: there was a command, even one that was of no use.
  [[nodiscard]] bool has_command() const {
    return opening || std::ranges::any_of(work, [](const LogEvent& event) {
             return event.error && is_own(*event.error, foundation::kNotOpenedError);
           });
  }
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

/// What lies beneath all else.
const Error& innermost(const Error& error) {
  const Error* cause = &error;
  while (const Error* const beneath = cause->underlying()) {
    cause = beneath;
  }
  return *cause;
}

/// Left out for what an event of the log tells. Words of the system name nothing; others may.
LeftOut left_out_for(std::string what, const LogEvent& event) {
  LeftOut left{std::move(what), plain_reason(event)};
  if (!event.error) {
    left.logged_as = "as the line before says";
  } else if (const Error& cause = innermost(*event.error);
             cause.domain != foundation::NSPOSIXErrorDomain) {
    left.logged_as = foundation::format("%@ %i", cause.domain, cause.code);
  }
  return left;
}

LeftOut left_out(const SharedItem& item, bool is_folder_in_trouble) {
  const auto logged = recording::events_of_kind<LogEvent>(item.events());
  if (logged.empty()) {
    return {item.given(), item.state() == SharedItem::State::kNotAsked ? "it was not asked for"
                                                                       : "it took too long"};
  }
  return is_failure_of_folder(logged.back(), is_folder_in_trouble)
             ? LeftOut{item.given(), "the shared folder cannot be used"}
             : left_out_for(item.given(), logged.back());
}

SharedThing shared_thing(const SharedItem& item) {
  const bool is_link = item.type() == platform::kUTTypeURL;
  const bool is_image = item.type() == platform::kUTTypeImage;
  return {is_link ? "link" : (is_image ? "image" : "file"), item.given(), item.bytes()};
}

/// Adds what the draft holds, and what it does not.
void add_things(ShareResult& result, const Selection& selection, const Course& course) {
  result.left_out = selection.left_out;
  const auto& text = selection.html ? selection.html : selection.text;
  const LogEvent* const trouble = course.trouble_with_text();
  if (text && result.is_opened && trouble != nullptr) {
    result.left_out.push_back(left_out_for("the text", *trouble));
  } else if (text) {
    result.shared.push_back({selection.html ? "HTML" : "text", "", text->size()});
  }
  const Draft draft(course.opening ? course.opening->urls : Urls());
  for (const auto& item : selection.items) {
    if (!course.has_command() || draft.holds(*item)) {
      result.shared.push_back(shared_thing(*item));
    } else {
      result.left_out.push_back(left_out(*item, result.folder_trouble.has_value()));
    }
  }
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

void add_failure(ShareResult& result, const Selection& selection, const Course& course) {
  if (selection.empty()) {
    result.failure = "nothing that was given can be shared";
    result.advice = selection.left_out.empty() ? "give something that can be read" : kSeeReasons;
    return;
  }
  result.is_failure_logged = true;
  result.failure = "the system log has the reason";
  result.advice = kTryDoctor;
  const std::vector<LogEvent>& logged = course.opening ? course.launch : course.work;
  if (logged.empty()) {
    return;
  }
  result.failure = plain_reason(logged.back());
  const std::string* const advice =
      logged.back().error ? logged.back().error->detail(gio::kAdviceKey) : nullptr;
  result.advice = advice != nullptr ? *advice : result.advice;
}

}  // namespace

std::string plain_reason(const LogEvent& event) {
  if (!event.error) {
    return foundation::printable(event.text);
  }
  const Error& cause = innermost(*event.error);
  if (cause.domain == foundation::NSPOSIXErrorDomain) {
    return cause.code == 0 ? "unknown error" : posix::error_words(cause.code);
  }
  return foundation::printable(
      cause.text.empty() ? foundation::format("%@ Code=%i", cause.domain, cause.code) : cause.text);
}

ExitCode ShareResult::code() const {
  if (!is_opened) {
    return ExitCode::kNotOpened;
  }
  return left_out.empty() ? ExitCode::kOpened : ExitCode::kSomethingLeftOut;
}

ShareResult result_of(const Selection& selection, const std::vector<recording::Event>& events) {
  const Course course(events);
  ShareResult result;
  result.is_opened = course.is_opened;
  result.application = course.opening ? course.opening->application : "";
  if (!was_used(selection)) {
    if (const auto trouble = staging_trouble(course.preparation)) {
      result.folder_trouble =
          "the shared folder cannot be used: " + *trouble + "; " + std::string(kTryDoctor);
    }
  }
  add_things(result, selection, course);
  if (!result.is_opened) {
    add_failure(result, selection, course);
  }
  return result;
}

ShareResult failed_share(std::string reason, std::string advice) {
  ShareResult result;
  result.failure = std::move(reason);
  result.advice = std::move(advice);
  return result;
}

}  // namespace quoll::share
