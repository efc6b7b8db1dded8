#pragma once

#include <chrono>
#include <string>

#include "apps/compose/writer_server.h"

namespace quoll::compose {

/// Answers calls to `identifier` on the session bus, as `org.freedesktop.Application`, until none
/// has come for `idle`. Answers the exit status: 0, or 1 when there is no bus or another program
/// has the name, which is said on standard error. On SIGTERM it ends the program within a second:
/// new calls are refused, and all that was answered is gone on with at the next start.
///
/// `Open` is answered when the drafts were taken: from then on each will be written, and the sender
/// may remove its files. If one of the drafts cannot be taken, none is, and `Open` answers an
/// error. A sender that puts `quoll-report` into the platform data is told what was left out, by
/// the error `it.vorlent.quoll2.Error.LeftOut`; one that puts `quoll-draft` there is told where a
/// draft is of which nothing was left out, by `it.vorlent.quoll2.Error.Taken`.
///
/// `Activate` takes nothing and shows nothing. It answers an error when no draft can be kept.
[[nodiscard]] int serve(const std::string& identifier, std::chrono::milliseconds idle,
                        WriterServer& writer);

}  // namespace quoll::compose
