#pragma once

#include <string>

#include "apps/compose/taken_files.h"
#include "quoll/message/extension_message.h"

namespace quoll::compose {

/// Writes a message file for the draft and answers its path,
/// `<drafts>/<YYYYMMDD-HHMMSS>[-n].eml`, for the user alone. The name appears when the file is
/// whole. However large and many the files are, they are neither held in memory nor open together.
/// Throws `CannotCompose`.
[[nodiscard]] std::string write_draft(const ExtensionMessage& message,
                                      const std::vector<TakenFile>& files);

}  // namespace quoll::compose
