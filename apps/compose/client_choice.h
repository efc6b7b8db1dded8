#pragma once

#include <ostream>
#include <string>

namespace quoll::compose {

/// Writes a line for each mail client that is there: which one drafts go to, and what it takes.
void print_clients(std::ostream& out);

/// Lets drafts go to the client of this name or identifier, whatever the case of its letters, or to
/// the desktop's default for "default" and for nothing. Answers a sentence that says so. Throws
/// `CannotCompose` when there is none, or the choice cannot be kept.
[[nodiscard]] std::string choose_client(const std::string& name);

}  // namespace quoll::compose
