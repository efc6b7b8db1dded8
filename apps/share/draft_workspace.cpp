#include "apps/share/draft_workspace.h"

#include <algorithm>
#include <string>

#include "quoll/foundation/error.h"
#include "quoll/linux/gio/launcher.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/log.h"

namespace quoll::share {

namespace {

using foundation::NSURL;

bool is_empty(const foundation::Value& text) {
  return text.text() == nullptr || text.text()->empty();
}

/// True for a command whose draft would hold nothing.
bool is_useless(const std::shared_ptr<NSURL>& command) {
  if (!command) {
    return false;
  }
  const auto message = ExtensionMessage::ExtensionMessageWithUrl(command);
  return message->attachments().count() == 0 && is_empty(message->htmlBody()) &&
         is_empty(message->plainBody());
}

void log_nothing() {
  const std::string failure = "nothing that was given can be shared";
  auto error = foundation::quoll_error(foundation::kNotOpenedError, failure);
  error.user_info.emplace_back(gio::kAdviceKey, "see to the reasons above and share again");
  platform::log_event({"openURLs " + failure, std::move(error)});
}

}  // namespace

bool DraftWorkspace::openURLs(const std::vector<std::shared_ptr<NSURL>>& urls,
                              std::string_view application,
                              platform::NSWorkspaceLaunchOptions options) {
  if (std::ranges::any_of(urls, is_useless)) {
    log_nothing();
    return false;
  }
  return workspace_->openURLs(urls, application, options);
}

}  // namespace quoll::share
