#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/linux/gio/desktop_entry.h"

namespace quoll::gio {

/// How a mail client can be given a draft.
enum class DraftWay {
  kMessageFile,  ///< a message file, which it opens for editing: Thunderbird and its relatives
  kEvolution,
  kKMail,
  kClaws,
  kSylpheed,
  kBalsa,
  kMutt,
  kAerc,
  kMailLink,  ///< as any program that opens mail links: by a plain one, which carries no files
  kNone,      ///< it does not open mail links
};

/// The sandbox that keeps a mail client from the user's files.
struct Sandbox {
  bool is_flatpak = false;
  bool passes_files_on = false;  ///< a Flatpak can read the files that its `Exec` line names
  std::string snap;              ///< the name of the snap; empty when it is not a snap
  [[nodiscard]] bool is_any() const { return is_flatpak || !snap.empty(); }
};

struct MailClient {
  EntryHandle entry;
  std::string id;    ///< followed by ".desktop"
  std::string name;  ///< as people know it
  DraftWay way = DraftWay::kNone;
  bool is_in_terminal = false;  ///< it runs inside a terminal window
  Sandbox sandbox;

  /// True when it can read the files of a draft, if it takes some at all. In a sandbox only a
  /// message file can be read: by a Flatpak whose files are passed on, and by a snap when the file
  /// is in the snap's own folder.
  [[nodiscard]] bool reads_files() const;
  /// True when a draft can be given to it in some way, if only one without attachments.
  [[nodiscard]] bool takes_drafts() const {
    return way == DraftWay::kMessageFile ? reads_files() : way != DraftWay::kNone;
  }
};

/// The entry with which the desktop opens message files; null when there is none.
[[nodiscard]] EntryHandle opener_of_message_files();

/// The mail client of a desktop entry, recognised by its identifier or its program.
[[nodiscard]] MailClient mail_client_of(EntryHandle entry);

/// All programs that open `mailto:` links: the desktop's default first, the others by name.
[[nodiscard]] std::vector<MailClient> find_mail_clients();

/// The mail client that gets the drafts.
struct ChosenMailClient {
  std::optional<MailClient> client;  ///< none when no program opens `mailto:` links
  bool is_set = false;               ///< true: by the setting; false: the desktop's default
  std::string gone;                  ///< the setting, when it names a client that is not installed
};
[[nodiscard]] ChosenMailClient chosen_mail_client();

/// Writes a client's identifier to the setting, `<config>/quoll-compose/mail-client`. An empty one
/// removes the setting, and the desktop's default is used again.
[[nodiscard]] FailureReason set_mail_client(const std::string& id);

}  // namespace quoll::gio
