#pragma once

#include <string>
#include <string_view>

#include "quoll/linux/posix/unique_fd.h"

/// The receiver's own folder, `${XDG_DATA_HOME:-~/.local/share}/quoll-compose`. Its folders are
/// made when they are missing, for the user alone; without a home, or when they cannot be made,
/// `CannotCompose` is thrown.
namespace quoll::compose {

/// Kept drafts, one message file each.
[[nodiscard]] std::string drafts_folder();

/// How the name of a draft begins while it is written.
inline constexpr std::string_view kUnfinishedDraft = ".draft-";

/// What mail clients were given, a folder a draft.
[[nodiscard]] std::string given_folder();

/// Files that were taken for drafts that are not written yet.
[[nodiscard]] std::string incoming_folder();

/// Says that a draft is under way, as long as the descriptor lives; several programs may say so.
/// The first of them removes what a program that was killed has left, and what mail clients were
/// given long ago.
[[nodiscard]] posix::UniqueFd mark_draft_under_way();

/// Returns when no draft is under way in any program.
void wait_for_drafts_under_way();

}  // namespace quoll::compose
