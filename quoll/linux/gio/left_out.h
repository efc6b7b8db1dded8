#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/linux/gio/launcher.h"
#include "quoll/linux/posix/unique_fd.h"

/// What an application says of a request that it took (docs/command-url.md). For each draft the
/// text has a line with its path, and then a line `NAME: REASON` for each thing that was left out;
/// an empty line stands between two drafts.
namespace quoll::gio {

/// The D-Bus error by which an application says it. It has taken the rest.
inline constexpr const char* kLeftOutError = "it.vorlent.quoll2.Error.LeftOut";
/// The D-Bus error by which an application that has taken everything says where the drafts are.
inline constexpr const char* kTakenError = "it.vorlent.quoll2.Error.Taken";
/// A desktop entry has this key when its program closes the pipe whose number stands in this
/// variable as soon as it has taken the URLs.
inline constexpr const char* kTakenPipeKey = "X-Quoll-TakenPipe";
inline constexpr const char* kTakenPipeVariable = "QUOLL_TAKEN_PIPE";

/// Reads the text until the other side closes the pipe, but at most until the deadline. What comes
/// after the first 64 KiB is read and forgotten.
[[nodiscard]] std::string read_left_out(int pipe, std::chrono::steady_clock::time_point deadline);

/// The text without its lines beyond the first 64 KiB.
[[nodiscard]] std::string bounded_left_out(std::string text);

/// The path of the first draft, one line, ready for a terminal; empty when the text has none.
[[nodiscard]] std::string draft_in(std::string_view text);

/// What the text names: 100 things at most, then one called "...". The names and the reasons are
/// one line each, ready for a terminal.
[[nodiscard]] std::vector<LeftOut> left_out_of(std::string_view text);

}  // namespace quoll::gio
