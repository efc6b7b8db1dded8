#pragma once

#include <string>
#include <vector>

#include "apps/compose/taken_draft.h"

namespace quoll::compose {

/// Takes the drafts of these command URLs, all or none: each with its files becomes a folder of the
/// receiver's own. When this returns they are promised: whatever program ends, each will be
/// written. The staged files are not needed any more, and nothing of them was changed. What was
/// left out is logged. Throws `ComposeError`, for example when the disk has no room for these
/// drafts beside all that wait, or when there are more than 256.
[[nodiscard]] std::vector<TakenDraft> take(const std::vector<std::string>& urls);

/// Throws what `take` would throw for a draft of 64 KiB. Takes nothing.
void try_taking();

/// What a sender is told that asked for it: for each draft the path that its message file will
/// have, then a line `NAME: REASON` for each file that was left out, with control characters as
/// escapes. An empty line stands between two drafts.
[[nodiscard]] std::string report_of(const std::vector<TakenDraft>& drafts);

}  // namespace quoll::compose
