#pragma once

#include <chrono>
#include <ostream>
#include <string>

#include "apps/share/result.h"

/// What came of a share, for each kind of reader.
namespace quoll::share {

/// For people: a line for each thing that was left out, one when the shared folder could not be
/// prepared, and one when nothing was opened; nothing for a share that arrived whole.
void report(const ShareResult& result, std::ostream& out);

/// For people at a terminal: a share that was opened is taken, and where the draft will be.
[[nodiscard]] std::string where_it_went(const ShareResult& result);

/// For the system log, which others may read: counts, kinds, sizes and reasons; no
/// names of what is shared, no title and no text.
[[nodiscard]] std::string log_line(const ShareResult& result, std::chrono::milliseconds time);

/// For programs: one JSON object on one line, as the man page describes it.
[[nodiscard]] std::string as_json(const ShareResult& result, std::chrono::milliseconds time);

}  // namespace quoll::share
