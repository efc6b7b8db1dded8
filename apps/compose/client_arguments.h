#pragma once

#include <string>
#include <vector>

#include "quoll/linux/gio/mail_clients.h"

namespace quoll::compose {

/// A draft for a mail client that is told of it by its command line.
struct OutgoingDraft {
  std::string subject;  ///< one line
  std::vector<std::string> to, cc, bcc;
  std::string text;                ///< plain, with line feeds
  std::string text_file;           ///< where the same text lies
  std::vector<std::string> files;  ///< absolute paths of the attachments
};

/// What the client's program is started with, word by word; nothing in a draft becomes an option,
/// another recipient or another file. Empty when the client is told in another way.
[[nodiscard]] std::vector<std::string> client_arguments(gio::DraftWay way,
                                                        const OutgoingDraft& draft);

/// The name under which an attachment is given to the client: its own, with pictures of its control
/// characters as in a message file, and without what the client would write into a mail broken.
[[nodiscard]] std::string name_for_client(gio::DraftWay way, const std::string& name);

/// True when the client would read files of the draft, with these arguments.
[[nodiscard]] bool reads_files(gio::DraftWay way, const OutgoingDraft& draft);

/// True when the system starts a program with these: it takes 131,071 bytes an argument.
[[nodiscard]] bool are_startable(const std::vector<std::string>& arguments);

}  // namespace quoll::compose
