#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "quoll/foundation/nsurl.h"
#include "quoll/message/extension_message.h"

namespace quoll {

// The constants are symbols of the library and have their values before any code runs.

// Command words: the host part of a command URL.
extern const std::string_view commandArchive;  ///< "archive"
extern const std::string_view commandDelete;   ///< "delete"
extern const std::string_view commandReply;    ///< "reply"
extern const std::string_view commandMessage;  ///< "message"
extern const std::string_view commandCompose;  ///< "compose"
extern const std::string_view commandSend;     ///< "send"
extern const std::string_view commandOpen;     ///< "open"

// Bundle identifiers of the mail application's editions.
extern const std::string_view it_vorlent_quoll;         ///< "it.vorlent.quoll"
extern const std::string_view it_vorlent_quoll_beta8;   ///< "it.vorlent.quoll.beta8"
extern const std::string_view it_vorlent_quoll_beta10;  ///< "it.vorlent.quoll.beta10"
extern const std::string_view it_vorlent_quoll_beta11;  ///< "it.vorlent.quoll.beta11"
extern const std::string_view it_vorlent_quoll_2;       ///< "it.vorlent.quoll2"
extern const std::string_view it_vorlent_quoll_pro;     ///< "it.vorlent.quoll.pro"

/// The notification that `LaunchCommandForMessages` posts for each message. Its object is a
/// dictionary with two keys: "message" holds the record, "command" the command word.
extern const std::string_view ACTION_CALLED_EXTENSION;

namespace ExtensionUtilities {

/// `LaunchCommands:background:`: opens the command URLs with the mail application. The running
/// bundle's identifier decides which edition of it. The application comes to the front unless
/// `background` is set. False when the list is empty or when the application did not take the URLs.
/// Any thread may call.
bool LaunchCommands(const std::vector<std::shared_ptr<foundation::NSURL>>& urls, bool background);

/// `LaunchCommandForMessages:commandName:background:`: makes one command URL for each message,
/// posts `ACTION_CALLED_EXTENSION` for each on this thread, and then opens all URLs by
/// `LaunchCommands`, whose answer it returns. A message whose URL cannot be made is left out.
/// Raises when an account is neither null nor a text.
bool LaunchCommandForMessages(const std::vector<std::shared_ptr<ExtensionMessage>>& messages,
                              std::string_view commandName, bool background);

}  // namespace ExtensionUtilities
}  // namespace quoll
