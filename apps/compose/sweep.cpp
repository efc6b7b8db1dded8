#include "apps/compose/sweep.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/compose/draft_name.h"
#include "apps/compose/folders.h"
#include "apps/compose/given_draft.h"
#include "apps/compose/taken_draft.h"
#include "quoll/container/layout.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/remove_item.h"
#include "quoll/platform/log.h"

namespace quoll::compose {
namespace {

struct Folder {
  posix::UniqueFd fd;
  std::vector<std::string> names;
};

Folder listed(const std::string& path) {
  Folder folder{posix::UniqueFd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), {}};
  if (folder.fd) {
    static_cast<void>(posix::list_folder(folder.fd.get(), folder.names));
  }
  return folder;
}

/// The end of a name that earlier versions had made by chance.
bool is_by_chance(std::string_view ending) {
  const auto is_plain = [](char letter) {
    return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
           (letter >= 'a' && letter <= 'z');
  };
  return ending.size() == 6 && std::ranges::all_of(ending, is_plain);
}

/// Drafts that were never promised, or are being removed.
void sweep_taken() {
  const Folder taken = listed(taken_folder());
  for (const std::string& name : taken.names) {
    if (!name.starts_with(container::layout::unfinished_prefix) && !is_hidden_draft_name(name)) {
      continue;
    }
    // The lock is held until the folder is gone: its maker has it a moment after the folder is
    // there.
    if (const posix::UniqueFd lock = locked_folder(taken_folder() + "/" + name)) {
      static_cast<void>(posix::remove_item(taken.fd.get(), name));
    }
  }
}

void sweep_aside(const Moment& now) {
  for (const std::string& name : taken_drafts()) {
    auto draft = why_aside(name) ? TakenDraft::lock(name) : std::nullopt;
    if (draft && draft->is_aside_too_long(now)) {
      if (const int error = draft->remove()) {
        platform::log("the draft %@ cannot be removed: %@", name, posix::error_words(error));
      } else {
        platform::log("the draft %@, which could not be written, is removed after 30 days", name);
      }
    }
  }
}

/// A message file that is being written belongs to a taken draft.
void sweep_drafts() {
  const Folder drafts = listed(drafts_folder());
  for (const std::string& name : drafts.names) {
    if (name.starts_with('.') && name.ends_with(kMessageEnding)) {
      const std::string draft = name.substr(1, name.size() - 1 - kMessageEnding.size());
      if (is_draft_name(draft) && access((taken_folder() + "/" + draft).c_str(), F_OK) != 0) {
        unlinkat(drafts.fd.get(), name.c_str(), 0);
      }
    }
  }
}

/// Earlier versions hold a lock on their folder while they work on a draft. The folder stays: one
/// of them may wait for its lock. What they did not finish cannot be gone on with: they had a
/// draft's command in memory only, and put its files here under numbers. They made the folder
/// themselves, so a link in its place is somebody else's.
void sweep_earlier_versions() {
  const posix::UniqueFd lock = posix::open_folder(AT_FDCWD, incoming_folder());
  if (!lock || flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
    return;
  }
  std::vector<std::string> unfinished;
  static_cast<void>(posix::list_folder(lock.get(), unfinished));
  std::erase_if(unfinished, [](const std::string& name) { return !is_by_chance(name); });
  for (const std::string& name : unfinished) {
    static_cast<void>(posix::remove_item(lock.get(), name));
  }
  if (!unfinished.empty()) {
    platform::log("the files of drafts that an earlier version did not write are removed: %@",
                  unfinished.size());
  }
  constexpr std::string_view kUnfinished = ".draft-";
  const Folder drafts = listed(drafts_folder());
  for (const std::string& name : drafts.names) {
    if (name.starts_with(kUnfinished) && is_by_chance(name.substr(kUnfinished.size()))) {
      unlinkat(drafts.fd.get(), name.c_str(), 0);
    }
  }
}

}  // namespace

void sweep(const Moment& now) {
  sweep_taken();
  sweep_aside(now);
  sweep_drafts();
  sweep_given(now);
  sweep_earlier_versions();
}

}  // namespace quoll::compose
