#pragma once

#include <string>
#include <vector>

#include "apps/compose/draft_fields.h"
#include "quoll/linux/gio/mail_clients.h"

namespace quoll::compose {

/// The files that a client is given with a draft, as absolute paths.
struct ClientFiles {
  std::string text;  ///< holds the same text as the draft's fields
  std::vector<std::string> attachments;
};

/// The arguments that the client's program is started with. Nothing in a draft can become an
/// option, another recipient or another file. Empty when the client takes drafts in another way.
[[nodiscard]] std::vector<std::string> client_arguments(gio::DraftWay way, const DraftFields& draft,
                                                        const ClientFiles& files);

/// The name that an attachment gets for the client: its own name, with control characters replaced
/// by pictures as in a message file, and without what the client would write into a mail
/// incorrectly.
[[nodiscard]] std::string name_for_client(gio::DraftWay way, const std::string& name);

/// True when the draft's text would make the mail link of `kMailLink` longer than 2000 bytes, which
/// many programs cut. It is then not in the client's arguments.
[[nodiscard]] bool is_text_too_long(gio::DraftWay way, const DraftFields& draft);

/// True when the client, started with these arguments, would read files of the draft.
[[nodiscard]] bool reads_files(gio::DraftWay way, const DraftFields& draft,
                               const ClientFiles& files);

/// True when a program can be started with these arguments: the system takes 131,071 bytes for
/// each.
[[nodiscard]] bool are_startable(const std::vector<std::string>& arguments);

}  // namespace quoll::compose
