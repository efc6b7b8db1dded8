#pragma once

#include <string>
#include <vector>

#include "apps/compose/mime_handles.h"
#include "quoll/message/extension_message.h"

namespace quoll::compose {

/// The subject of the draft, as one line.
[[nodiscard]] std::string subject_line(const ExtensionMessage& message);

/// The addresses in a text of joined recipients, also those in groups, each as people write it. A
/// text that is not an address is left out here; the message file still has it.
[[nodiscard]] std::vector<std::string> addresses_in(const std::string& joined);

/// The plain text of the draft, with line feeds. A draft without one gets the text of its HTML.
[[nodiscard]] std::string plain_body(const ExtensionMessage& message);

/// A message with the headers of a draft that was never sent: `X-Unsent: 1`, the subject, the
/// recipients, and the sender if there is one. The date and the identifier are left to the mail
/// client. In joined recipients, each ends with ";". A text that is not an address is kept as a
/// name without an address, so that the user can correct it.
[[nodiscard]] MimeHandle<GMimeMessage> message_with_headers(const ExtensionMessage& message);

}  // namespace quoll::compose
