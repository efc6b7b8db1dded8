#include "apps/share/draft_workspace.h"

#include <string>
#include <vector>

#include "apps/share/result.h"
#include "quoll/foundation/error.h"
#include "quoll/linux/gio/launcher.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/log.h"
#include "quoll/requestutils/url_editing.h"
#include "quoll/requestutils/url_query.h"

namespace quoll::share {

namespace {

using foundation::Dictionary;
using foundation::NSURL;

bool is_empty(const foundation::Value& text) {
  return text.text() == nullptr || text.text()->empty();
}

/// True for a draft that would hold nothing.
bool is_useless(const ExtensionMessage& message) {
  return message.attachments().count() == 0 && is_empty(message.htmlBody()) &&
         is_empty(message.plainBody());
}

/// Adds recipients as a command has them.
void add(Dictionary& parameters, std::string_view key, const std::vector<std::string>& addresses) {
  std::string joined;
  for (const std::string& address : addresses) {
    joined.append(address).append(";");
  }
  if (!joined.empty()) {
    parameters.setObject(joined, key);
  }
}

/// The command with the envelope at its end. Nothing of it is taken apart or written anew.
std::shared_ptr<NSURL> with_envelope(const NSURL& command, const ExtensionMessage& message,
                                     const Envelope& envelope) {
  Dictionary parameters;
  if (envelope.subject && is_empty(message.subject())) {
    parameters.setObject(*envelope.subject, "subject");
  }
  add(parameters, "to", envelope.to);
  add(parameters, "cc", envelope.cc);
  add(parameters, "bcc", envelope.bcc);
  return NSURL::URLWithString(RequestUtils::stringByAppendingURLQuery(
      command.absoluteString(), RequestUtils::URLQueryWithParameters(parameters)));
}

void log_nothing() {
  const std::string failure = "nothing that was given can be shared";
  auto error = foundation::quoll_error(foundation::kNotOpenedError, failure);
  error.user_info.emplace_back(gio::kAdviceKey, kSeeReasons);
  platform::log_event({"openURLs " + failure, std::move(error)});
}

}  // namespace

bool DraftWorkspace::openURLs(const std::vector<std::shared_ptr<NSURL>>& urls,
                              std::string_view application,
                              platform::NSWorkspaceLaunchOptions options) {
  std::vector<std::shared_ptr<NSURL>> commands;
  for (const auto& url : urls) {
    if (!url) {
      return workspace_->openURLs(urls, application, options);  // it says what is wrong
    }
    const auto message = ExtensionMessage::ExtensionMessageWithUrl(url);
    if (is_useless(*message)) {
      log_nothing();
      return false;
    }
    commands.push_back(with_envelope(*url, *message, envelope_));
  }
  return workspace_->openURLs(commands, application, options);
}

}  // namespace quoll::share
