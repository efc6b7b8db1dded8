#pragma once

#include <string>

#include "apps/compose/taken_files.h"
#include "quoll/message/extension_message.h"

namespace quoll::compose {

/// Writes a message file for the draft and answers its path, `<drafts>/<YYYYMMDD-HHMMSS>[-n].eml`.
/// Only the user can read it. It gets its name when it is complete. The attached files are neither
/// held in memory nor open all at once, however large and many they are. Throws `CannotCompose`.
[[nodiscard]] std::string write_draft(const ExtensionMessage& message,
                                      const std::vector<TakenFile>& files);

}  // namespace quoll::compose
