#pragma once

#include <memory>
#include <string>

#include "quoll/message/extension_message.h"

namespace quoll::console {

/// Reads the message in a file, or on standard input for "-". The file holds a message dictionary
/// as a property list of any form, or a JSON object of the message's fields, with or without the
/// operation console's `$ExtensionMessage` around it. Never null. Throws `std::runtime_error` with
/// one line that says why there is no message.
[[nodiscard]] std::shared_ptr<ExtensionMessage> read_message(const std::string& file);

}  // namespace quoll::console
