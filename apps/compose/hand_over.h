#pragma once

#include <string>

#include "apps/compose/compose_error.h"
#include "apps/compose/draft_fields.h"
#include "apps/compose/outcome.h"
#include "apps/compose/taken_draft.h"
#include "apps/compose/writer_server.h"
#include "quoll/linux/gio/activation_tokens.h"

namespace quoll::compose {

/// True when there is a desktop to show windows on.
[[nodiscard]] bool has_desktop();

/// Gives a draft that was written to the user's mail client, in the way that the client takes
/// drafts, and waits for a moment: a client that ends at once with an error has not taken it. The
/// message file stays in any case. Nothing of a stranger's text is parsed here.
///
/// When no client is started, the draft is kept, and can be given to one later. Else its folder is
/// moved first, so that no draft is ever opened twice. If the client was seen to run or to end
/// without an error, the draft is marked as given, and is removed one day; a client in a terminal
/// cannot be seen.
[[nodiscard]] Outcome hand_over(TakenDraft draft, const DraftFields& fields,
                                const gio::ActivationTokens& tokens);

/// Keeps a draft that was written, without a client, for this reason.
[[nodiscard]] Outcome keep(TakenDraft draft, const ComposeError& reason);

/// Opens the message file of a draft with the chosen mail client or, when that takes none, with
/// what the desktop opens such files with. The draft's state stays. Answers the program's name;
/// throws `ComposeError` when none has opened it.
[[nodiscard]] std::string open_message_file(const std::string& draft,
                                            const gio::ActivationTokens& tokens);

/// Has the desktop ask which program shall open the message file of a draft; where it cannot, does
/// as `open_message_file`. Answers a sentence that says what was done; throws `ComposeError` when
/// nothing was.
[[nodiscard]] std::string open_with_choice(const std::string& draft,
                                           const gio::ActivationTokens& tokens);

/// Gives a draft that was written to this mail client once more, in the client's own way; to the
/// chosen one when `client_name` is empty. Answers the client's name; throws `ComposeError` when
/// none has taken it.
[[nodiscard]] std::string give_again(const std::string& draft, const std::string& client_name,
                                     WriterServer& writer, const gio::ActivationTokens& tokens);

}  // namespace quoll::compose
