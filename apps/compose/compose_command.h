#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/message/extension_message.h"

namespace quoll::compose {

/// A compose command. The attachments are paths, unchecked, in the order of the numbers in their
/// keys; keys without a number come last, in the order of the URL.
struct ComposeCommand {
  std::shared_ptr<ExtensionMessage> message;
  std::vector<std::string> attachments;
};

/// Reads a command URL with the command "compose". Throws `CannotCompose` for anything else,
/// however hostile it is.
[[nodiscard]] ComposeCommand read_compose_command(std::string_view text);

/// The text of a field; empty when it has none.
[[nodiscard]] std::string text_of_field(const foundation::Value& field);

}  // namespace quoll::compose
