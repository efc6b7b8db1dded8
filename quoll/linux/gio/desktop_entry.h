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

/// The entry `<application>.desktop`; null when there is none that can be used.
[[nodiscard]] EntryHandle find_entry(const std::string& application);

/// What a desktop entry's program is started with.
struct ProgramStart {
  std::vector<std::string> uris;  ///< replace the field codes of the entry's `Exec` line
  std::vector<std::string>
      arguments;  ///< used instead of the URLs if there are any; passed unchanged
  ActivationTokens tokens;
  /// The writing end of a pipe that the program inherits under its number, which QUOLL_TAKEN_PIPE
  /// tells it; -1 for none.
  int taken_pipe = -1;
};

/// Starts the program of a desktop entry by its `Exec` line, also when the entry asks for D-Bus
/// activation, and in a terminal when the entry asks for one. Returns as soon as it was started.
///
/// The program gets these tokens and no others, none of this process's other descriptors, and
/// /dev/null as standard input and output. So nobody who waits for the end of our output waits for
/// a mail application.
///
/// With `process`, it receives the process identifier, and the caller waits for the program; 0 when
/// there is none to wait for.
[[nodiscard]] FailureReason start_program(GDesktopAppInfo* entry, const ProgramStart& start,
                                          pid_t* process = nullptr);

/// Why a program cannot be started with what it is given.
inline constexpr const char* kTooLongForStart =
    "it is too long: no more than 128 KiB can be handed over without a session bus";

/// The path of `<application>.desktop`, whether it can be used or not; empty when no data folder
/// has it.
[[nodiscard]] std::string entry_file(const std::string& application);

}  // namespace quoll::gio
