#pragma once

#include "apps/compose/draft_fields.h"
#include "apps/compose/outcome.h"
#include "apps/compose/taken_draft.h"
#include "quoll/linux/gio/activation_tokens.h"

namespace quoll::compose {

/// True when there is a desktop to show windows on.
[[nodiscard]] bool has_desktop();

/// Gives a draft that was written to the user's mail client, in the way that the client takes
/// drafts, and waits for a moment: a client that ends at once with an error has not taken it. The
/// message file stays in any case. Nothing of a stranger's text is parsed here.
///
/// When no client is started, the taken folder is removed: the draft is kept. Else the folder is
/// moved first, so that no draft is ever opened twice. If the client was seen to run or to end
/// without an error, the draft is marked as given, and is removed one day; a client in a terminal
/// cannot be seen.
[[nodiscard]] Outcome hand_over(TakenDraft draft, const DraftFields& fields,
                                const gio::ActivationTokens& tokens);

/// Keeps a draft that was written, without a client, for this reason.
[[nodiscard]] Outcome keep(TakenDraft draft, const std::string& reason);

}  // namespace quoll::compose
