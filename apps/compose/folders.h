#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quoll/linux/posix/unique_fd.h"

/// The receiver's own folder, `${XDG_DATA_HOME:-~/.local/share}/quoll-compose`, and what lies in
/// it; docs/mail-clients.md tells what each is for. These functions answer paths and make nothing.
/// They throw `ComposeError` when there is no home.
namespace quoll::compose {

/// Drafts that wait to be written, a folder each.
[[nodiscard]] std::string taken_folder();
/// Drafts that were written, a message file each.
[[nodiscard]] std::string drafts_folder();
/// What mail clients were given, a folder for each draft.
[[nodiscard]] std::string given_folder();
/// Where earlier versions kept the files of drafts that were not written yet.
[[nodiscard]] std::string incoming_folder();

/// When drafts were offered to clients, and floods told of, in the last seconds.
[[nodiscard]] std::string recent_offers_file();
[[nodiscard]] std::string recent_floods_file();

/// What the name of a message file ends with.
inline constexpr std::string_view kMessageEnding = ".eml";

/// The user's home folder.
[[nodiscard]] std::string home_folder();

/// The message file of the draft with this name.
[[nodiscard]] std::string message_file(const std::string& draft);
/// The same while it is being written.
[[nodiscard]] std::string unfinished_message_file(const std::string& draft);

/// Opens one of the folders, which its owner may have put behind a link. Throws `ComposeError`.
[[nodiscard]] posix::UniqueFd open_folder(const std::string& path);
/// The names in one of the folders, in no order; none when it is not there. Throws `ComposeError`.
[[nodiscard]] std::vector<std::string> names_in(const std::string& path);

/// Makes the folders that are missing, for this user alone. Throws `ComposeError`.
void make_folders();

/// Makes them too. Throws `ComposeError` also when this user may not write where a draft is taken
/// and kept, now or later; what else may fail is not tried.
void require_writable_folders();

/// The same, and tries to write there, and to use the lists of recent moments. Throws
/// `ComposeError` when that cannot be.
void try_folders();

}  // namespace quoll::compose
