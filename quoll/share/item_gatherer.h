#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "quoll/foundation/error.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/extension_host.h"

namespace quoll::ExtensionUtilities {

using GatheringCompletion = std::function<void(const std::shared_ptr<ExtensionMessage>& message,
                                               const std::optional<foundation::Error>& error)>;

/// `GetItemForExtension:service:completion:`: makes one message of what the host shares. Links and
/// styled text become its HTML body, a link's title its subject; files and images are staged in the
/// folder `service` and become its attachments.
///
/// Returns at once. The work and the completion run on the global background queue. The completion
/// is called once, with the message and no error, when every attachment has answered or after about
/// 10.1 s; a null context shares nothing. What answers later still changes the message, too late
/// for the command made from it.
void GetItemForExtension(std::shared_ptr<platform::NSExtensionContext> context, std::string service,
                         GatheringCompletion completion);

}  // namespace quoll::ExtensionUtilities
