#include "apps/compose/room.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <map>
#include <utility>

#include "apps/compose/compose_error.h"
#include "apps/compose/draft_summary.h"
#include "apps/compose/folders.h"
#include "apps/compose/noted_sizes.h"
#include "apps/compose/taken_draft.h"
#include "quoll/linux/posix/folder_cursor.h"

namespace quoll::compose {
namespace {

struct Disk {
  std::uint64_t free;
  std::uint64_t whole;
};

Disk disk_of_drafts() {
  const std::string folder = drafts_folder();
  struct statvfs room {};
  if (statvfs(folder.c_str(), &room) != 0) {
    throw ComposeError("the room in " + folder + " is not known: " + std::strerror(errno));
  }
  return {.free = room.f_bavail * room.f_frsize, .whole = room.f_blocks * room.f_frsize};
}

/// By their names, what drafts need. What is noted of a draft never changes, so it is read once:
/// else each of many drafts would read the notes of all that wait.
using Needs = std::map<std::string, std::uint64_t>;

std::uint64_t need_of(const std::string& draft) {
  const posix::UniqueFd folder = posix::open_folder(AT_FDCWD, taken_folder() + "/" + draft);
  return folder ? noted_sizes(folder.get()).message : 0;  // none: it was finished meanwhile
}

const Needs& needs_of_all() {
  static Needs known;
  Needs needs;
  for (const std::string& draft : taken_drafts()) {
    const auto found = known.find(draft);
    needs.emplace(draft, found != known.end() ? found->second : need_of(draft));
  }
  known = std::move(needs);
  return known;
}

/// Whether the draft's message file is still to be written, and can be.
bool waits_for_room(const std::string& draft, std::uint64_t need, const Disk& disk) {
  return need <= disk.whole && !why_aside(draft) && access(message_file(draft).c_str(), F_OK) != 0;
}

std::string in_words(std::uint64_t size) {
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  return size_text(static_cast<std::int64_t>(std::min(size, kMost)));
}

}  // namespace

void require_room(std::uint64_t needed) {
  const Disk disk = disk_of_drafts();
  const Needs& needs = needs_of_all();
  std::uint64_t most = needed;
  for (const auto& [draft, need] : needs) {
    most = sum_of(most, need);
  }
  if (most <= disk.free) {
    return;
  }
  for (const auto& [draft, need] : needs) {
    if (waits_for_room(draft, need, disk)) {
      needed = sum_of(needed, need);
    }
  }
  if (needed > disk.free) {
    throw ComposeError(
        "there is no room for the draft: " + in_words(needed) + " are needed in " + drafts_folder(),
        "make room on its disk");
  }
}

std::optional<std::string> why_never(int taken_folder) {
  const std::uint64_t need = noted_sizes(taken_folder).message;
  return need <= disk_of_drafts().whole ? std::nullopt
                                        : std::optional("it needs " + in_words(need) +
                                                        ", which is more than the whole disk has");
}

}  // namespace quoll::compose
