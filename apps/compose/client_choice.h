#pragma once

#include <ostream>
#include <string>

#include "quoll/linux/gio/mail_clients.h"

namespace quoll::compose {

/// Writes a line for each installed mail client, with how it takes drafts, and marks the one that
/// gets them.
void print_clients(std::ostream& out);

/// The installed client of this name or identifier, in upper or lower case. Throws `ComposeError`
/// when there is none, or it takes no draft.
[[nodiscard]] gio::MailClient client_called(const std::string& name);

/// Chooses the client that gets drafts, by its name or identifier in upper or lower case; "default"
/// or an empty name chooses the desktop's default. Answers a sentence that says so. Throws
/// `ComposeError` when there is no such client, when it takes no draft, or when the choice cannot
/// be written.
[[nodiscard]] std::string choose_client(const std::string& name);

}  // namespace quoll::compose
