#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/message/extension_message.h"

namespace quoll::compose {

/// What a compose command asks for. The attachments are the paths as they came, in the order of the
/// numbers in their keys; keys without a number come last, in the order in which they stand.
struct ComposeCommand {
  std::shared_ptr<ExtensionMessage> message;
  std::vector<std::string> attachments;
};

/// Reads a command URL of the command "compose". Throws `CannotCompose` for everything else,
/// however hostile.
[[nodiscard]] ComposeCommand read_compose_command(std::string_view text);

/// A field's text; empty when it has none.
[[nodiscard]] std::string text_of_field(const foundation::Value& field);

}  // namespace quoll::compose
