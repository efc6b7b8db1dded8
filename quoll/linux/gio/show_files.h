#pragma once

#include <string>
#include <vector>

#include "quoll/linux/gio/activation_tokens.h"
#include "quoll/linux/gio/open_request.h"

namespace quoll::gio {

/// Has the desktop's file manager show the folder with these files in it selected; the folder alone
/// where no file manager can be asked to select. `folder` is an absolute path, the names are those
/// of files in it. Runs the default main context of this thread, for 30 s at the most.
[[nodiscard]] FailureReason show_files(const std::string& folder,
                                       const std::vector<std::string>& names,
                                       const ActivationTokens& tokens);

}  // namespace quoll::gio
