#pragma once

#include <gio/gdesktopappinfo.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include "quoll/linux/gio/activation_tokens.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/open_request.h"

namespace quoll::gio {

using EntryHandle = ObjectHandle<GDesktopAppInfo>;

/// What an entry's program is started with.
struct ProgramStart {
  std::vector<std::string> uris;       ///< for the field codes of the entry's `Exec` line
  std::vector<std::string> arguments;  ///< when there are any, these instead, each as it is
  ActivationTokens tokens;
};

/// Starts an entry's program by the entry's own `Exec` line, in a terminal when the entry asks for
/// one, even when it asks for D-Bus activation, and answers as soon as it was started. The program
/// gets these tokens and no others, none of this process's descriptors, and no standard input or
/// output: who waits for the end of ours does not wait for a mail application.
///
/// With `process`, the program is left for the caller to wait for; 0 when nobody can.
[[nodiscard]] Failure start_program(GDesktopAppInfo* entry, const ProgramStart& start,
                                    pid_t* process = nullptr);

/// True when `<application>.desktop` exists in a data folder, whether it can be used or not.
[[nodiscard]] bool entry_exists(const std::string& application);

}  // namespace quoll::gio
