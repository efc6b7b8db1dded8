#pragma once

#include <string>
#include <vector>

#include "apps/compose/mime_handles.h"
#include "quoll/message/extension_message.h"

namespace quoll::compose {

/// The draft's subject as one line.
[[nodiscard]] std::string subject_line(const ExtensionMessage& message);

/// The addresses of joined recipients, each as people write it; those of groups too. What is no
/// address is left out: it stays in the message file alone.
[[nodiscard]] std::vector<std::string> addresses_in(const std::string& joined);

/// A message with the headers of a draft that was never sent: `X-Unsent: 1`, the subject, the
/// recipients, and the sender when there is one; no date and no identifier, which are the mail
/// client's. Joined recipients end in ";" each; a text that is no address stays, as a name without
/// one, so that a person can mend it.
[[nodiscard]] MimeHandle<GMimeMessage> message_with_headers(const ExtensionMessage& message);

}  // namespace quoll::compose
