#pragma once

#include <gio/gdesktopappinfo.h>

#include <string>
#include <vector>

#include "linux/gio/activation_tokens.h"
#include "linux/gio/handles.h"
#include "linux/gio/open_request.h"

namespace quoll::gio {

using EntryHandle = ObjectHandle<GDesktopAppInfo>;

/// Starts an entry's program by the entry's own `Exec` line, even when the entry asks for D-Bus
/// activation, and answers as soon as it was started. The program gets these tokens and no others,
/// none of this process's descriptors, and no standard input or output: who waits for the end of
/// ours does not wait for a mail application.
[[nodiscard]] Failure start_program(GDesktopAppInfo* entry, const std::vector<std::string>& uris,
                                    const ActivationTokens& tokens);

/// True when `<application>.desktop` exists in a data folder, whether it can be used or not.
[[nodiscard]] bool entry_exists(const std::string& application);

}  // namespace quoll::gio
