#pragma once

#include <string>
#include <vector>

#include "quoll/linux/gio/mail_clients.h"

namespace quoll::compose {

/// A draft for a mail client that takes it by its command line.
struct OutgoingDraft {
  std::string subject;  ///< one line
  std::vector<std::string> to, cc, bcc;
  std::string text;                ///< plain, with line feeds
  std::string text_file;           ///< the path of a file with the same text
  std::vector<std::string> files;  ///< absolute paths of the attachments
};

/// The arguments that the client's program is started with. Nothing in a draft can become an
/// option, another recipient or another file. Empty when the client takes drafts in another way.
[[nodiscard]] std::vector<std::string> client_arguments(gio::DraftWay way,
                                                        const OutgoingDraft& draft);

/// The name that an attachment gets for the client: its own name, with control characters replaced
/// by pictures as in a message file, and without what the client would write into a mail
/// incorrectly.
[[nodiscard]] std::string name_for_client(gio::DraftWay way, const std::string& name);

/// True when the client, started with these arguments, would read files of the draft.
[[nodiscard]] bool reads_files(gio::DraftWay way, const OutgoingDraft& draft);

/// True when a program can be started with these arguments: the system takes 131,071 bytes for
/// each.
[[nodiscard]] bool are_startable(const std::vector<std::string>& arguments);

}  // namespace quoll::compose
