#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/message/extension_message.h"

namespace quoll {

/// A command URL, read by the rules for receivers.
struct ReceivedCommand {
  std::string command;  ///< one of the command words, such as "compose"
  /// Every key of the query, with its decoded text.
  foundation::Dictionary parameters;
  /// The keys that belong to a message. Never null; its recipients are in the three texts.
  std::shared_ptr<ExtensionMessage> message;
  /// The paths of the attachments, unchecked, in the order of the numbers in their keys. Keys
  /// without a number come last, in the order of the URL.
  std::vector<std::string> attachments;
};

/// Reads a command URL, which anyone may have written. It is `quoll://`, then a command word, then
/// nothing or a query or a fragment; scheme and word are in lower case. Raises
/// `NSInvalidArgumentException` with a sentence for people as its reason when the text is anything
/// else, or when its query cannot be read.
[[nodiscard]] ReceivedCommand read_received_command(std::string_view text);

}  // namespace quoll
