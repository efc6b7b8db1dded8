#pragma once

#include <ostream>
#include <string>

namespace quoll::compose {

/// Writes a line for each installed mail client, with how it takes drafts, and marks the one that
/// gets them.
void print_clients(std::ostream& out);

/// Chooses the client that gets drafts, by its name or identifier in upper or lower case; "default"
/// or an empty name chooses the desktop's default. Answers a sentence that says so. Throws
/// `ComposeError` when there is no such client, or when the choice cannot be written.
[[nodiscard]] std::string choose_client(const std::string& name);

}  // namespace quoll::compose
