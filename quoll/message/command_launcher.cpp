#include "quoll/message/command_launcher.h"

#include <algorithm>
#include <array>
#include <string>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/format.h"
#include "quoll/platform/bundle.h"
#include "quoll/platform/notifications.h"
#include "quoll/platform/workspace.h"
#include "quoll/requestutils/url_query.h"

namespace quoll {

constinit const std::string_view commandArchive = "archive";
constinit const std::string_view commandDelete = "delete";
constinit const std::string_view commandReply = "reply";
constinit const std::string_view commandMessage = "message";
constinit const std::string_view commandCompose = "compose";
constinit const std::string_view commandSend = "send";
constinit const std::string_view commandOpen = "open";
constinit const std::string_view it_vorlent_quoll = "it.vorlent.quoll";
constinit const std::string_view it_vorlent_quoll_beta8 = "it.vorlent.quoll.beta8";
constinit const std::string_view it_vorlent_quoll_beta10 = "it.vorlent.quoll.beta10";
constinit const std::string_view it_vorlent_quoll_beta11 = "it.vorlent.quoll.beta11";
constinit const std::string_view it_vorlent_quoll_2 = "it.vorlent.quoll2";
constinit const std::string_view it_vorlent_quoll_pro = "it.vorlent.quoll.pro";
constinit const std::string_view ACTION_CALLED_EXTENSION = "ACTION_CALLED_EXTENSION";

}  // namespace quoll

namespace quoll::ExtensionUtilities {

namespace {

using foundation::Dictionary;
using foundation::NSURL;
using foundation::Value;

/// The edition of the mail application that an extension with this identifier belongs to. The
/// editions are tried in this order; "it.vorlent.quoll.pro" is not among them.
std::string_view application_for(std::string_view own_identifier) {
  const std::array kEditions{it_vorlent_quoll_beta8, it_vorlent_quoll_beta10,
                             it_vorlent_quoll_beta11, it_vorlent_quoll_2};
  const auto* const found =
      std::find_if(kEditions.begin(), kEditions.end(),
                   [&](std::string_view edition) { return own_identifier.starts_with(edition); });
  return found == kEditions.end() ? it_vorlent_quoll : *found;
}

/// The account, percent-encoded; null stays null, which is written as the null text.
Value encoded(const Value& account) {
  const std::string* text = account.stringValue();
  return text == nullptr ? Value() : Value(RequestUtils::URLEncodedString(*text));
}

}  // namespace

bool LaunchCommands(const std::vector<std::shared_ptr<NSURL>>& urls, bool background) {
  if (urls.empty()) {
    return false;
  }
  const Value identifier = platform::main_bundle_identifier();
  const std::string* own = identifier.text();
  return platform::NSWorkspace::sharedWorkspace()->openURLs(
      urls, application_for(own == nullptr ? std::string_view() : *own),
      background ? platform::NSWorkspaceLaunchWithoutActivation
                 : platform::NSWorkspaceLaunchAllowingClassicStartup);
}

bool LaunchCommandForMessages(const std::vector<std::shared_ptr<ExtensionMessage>>& messages,
                              std::string_view commandName, bool background) {
  std::vector<std::shared_ptr<NSURL>> urls;
  for (const auto& message : messages) {
    auto url = NSURL::URLWithString(foundation::format(
        "quoll://%@?mail=%@&messageid=%@&folderstandardid=%@", commandName,
        encoded(message->account()), message->messageId(), message->folderStandardId()));
    if (!url) {
      continue;
    }
    platform::NSNotificationCenter::defaultCenter()->postNotificationName(
        ACTION_CALLED_EXTENSION, Dictionary{{"message", message}, {"command", commandName}});
    urls.push_back(std::move(url));
  }
  return LaunchCommands(urls, background);
}

}  // namespace quoll::ExtensionUtilities
