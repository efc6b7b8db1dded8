#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/linux/gio/desktop_entry.h"

namespace quoll::gio {

/// How a mail client can be given a draft.
enum class DraftWay {
  kMessageFile,  ///< Thunderbird and its kin open a message file in a compose window
  kEvolution,
  kKMail,
  kClaws,
  kMutt,
  kNone,  ///< not known to take one
};

/// What keeps a mail client from the user's files.
struct Sandbox {
  bool is_flatpak = false;
  bool passes_files_on = false;  ///< the files that a Flatpak's `Exec` line names can be read
  std::string snap;              ///< the snap's name; empty when it is none
  [[nodiscard]] bool is_any() const { return is_flatpak || !snap.empty(); }
};

struct MailClient {
  EntryHandle entry;
  std::string id;    ///< with ".desktop" behind it
  std::string name;  ///< for people
  DraftWay way = DraftWay::kNone;
  bool is_in_terminal = false;  ///< what is started is a terminal, and it in there
  Sandbox sandbox;

  /// True when it reaches the files of a draft: in a sandbox, the message file of a Flatpak whose
  /// files are passed on, and of a snap one in the snap's own folder.
  [[nodiscard]] bool reads_files() const;
};

/// A mail client as its entry shows it, by its identifier or its program.
[[nodiscard]] MailClient mail_client_of(EntryHandle entry);

/// Every program that opens `mailto:` links, the desktop's default first, the others by their
/// names.
[[nodiscard]] std::vector<MailClient> find_mail_clients();

/// The one that drafts go to.
struct ChosenMailClient {
  std::optional<MailClient> client;  ///< none when no program opens `mailto:` links
  bool is_set = false;               ///< by the setting, else it is the desktop's default
  std::string gone;                  ///< the setting, when it names a client that is not there
};
[[nodiscard]] ChosenMailClient chosen_mail_client();

/// Keeps a client's identifier as the setting, `<config>/quoll-compose/mail-client`; an empty one
/// goes back to the desktop's default.
[[nodiscard]] Failure set_mail_client(const std::string& id);

}  // namespace quoll::gio
