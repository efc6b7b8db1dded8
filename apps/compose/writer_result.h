#pragma once

#include "apps/compose/draft_fields.h"

namespace quoll::compose {

/// Writes the fields behind the message that `file` holds, and a trailer that tells where each of
/// the two ends. Throws `CannotCompose`.
void append_fields(int file, const DraftFields& fields);

/// Reads and checks the fields behind the message, and cuts the file to the message. Throws
/// `CannotCompose` when anything is not as it should be. `file` is open for reading and writing.
[[nodiscard]] DraftFields take_fields(int file);

}  // namespace quoll::compose
