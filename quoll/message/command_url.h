#pragma once

#include <memory>
#include <string_view>

#include "quoll/foundation/collections.h"

namespace quoll {
class ExtensionMessage;
}

/// The query of a command URL.
namespace quoll::command_url {

/// How the keys of attachments begin; a number follows. An attachment's value is its path.
inline constexpr std::string_view attachment_prefix = "attachment_";

/// True for the keys that a message is read from.
[[nodiscard]] bool is_message_key(std::string_view key);

/// A new message, filled from the parameters of a query.
[[nodiscard]] std::shared_ptr<ExtensionMessage> message_of(
    const foundation::Dictionary& parameters);

}  // namespace quoll::command_url
