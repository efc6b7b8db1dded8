#pragma once

#include <string>
#include <string_view>

#include "quoll/linux/posix/unique_fd.h"

/// The receiver's own folder, `${XDG_DATA_HOME:-~/.local/share}/quoll-compose`, and the folders in
/// it. A missing folder is made, and only the user can read it. Without a home, or when a folder
/// cannot be made, `CannotCompose` is thrown.
namespace quoll::compose {

/// The folder of drafts, one message file each.
[[nodiscard]] std::string drafts_folder();

/// The beginning of a draft's name while it is being written.
inline constexpr std::string_view kUnfinishedDraft = ".draft-";

/// The folder of what mail clients were given, with one folder for each draft.
[[nodiscard]] std::string given_folder();

/// The folder of files that were taken for drafts that are not written yet.
[[nodiscard]] std::string incoming_folder();

/// Notes that this program works on a draft, until the descriptor is closed. Several programs may
/// do so at once. The first of them removes what a killed program has left, and what mail clients
/// were given long ago.
[[nodiscard]] posix::UniqueFd mark_draft_under_way();

/// Waits until no program works on a draft.
void wait_for_drafts_under_way();

}  // namespace quoll::compose
