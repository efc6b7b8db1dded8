#pragma once

#include <string>

#include "linux/gio/activation_tokens.h"

namespace quoll::receiver {

/// Opens a draft with the mail client that handles `mailto:` links, when there is a desktop and the
/// client is known to open message files as drafts; otherwise the draft just stays. Answers what
/// was done, for people; empty without a desktop.
[[nodiscard]] std::string hand_to_mail_client(const std::string& draft,
                                              const gio::ActivationTokens& tokens);

}  // namespace quoll::receiver
