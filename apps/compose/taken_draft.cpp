#include "apps/compose/taken_draft.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "apps/compose/compose_error.h"
#include "apps/compose/draft_name.h"
#include "apps/compose/folders.h"
#include "apps/compose/small_file.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/exclusive_rename.h"
#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/remove_item.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::compose {
namespace {

constexpr const char* kAside = "aside";

/// Names end with the time, then with a number for those of the same second: "-9" is before "-10".
bool is_older(const std::string& one, const std::string& other) {
  const auto time = one.compare(0, 15, other, 0, 15);
  return time != 0 ? time < 0 : std::pair(one.size(), one) < std::pair(other.size(), other);
}

bool is_aside(const std::string& draft) {
  return access((taken_folder() + "/" + draft + "/" + kAside).c_str(), F_OK) == 0;
}

}  // namespace

posix::UniqueFd locked_folder(const std::string& path, int kind) {
  posix::UniqueFd folder = posix::open_folder(AT_FDCWD, path);
  if (!folder || posix::uninterrupted([&] { return flock(folder.get(), kind | LOCK_NB); }) != 0) {
    return {};
  }
  // It may have been moved or removed before the lock was there.
  struct stat locked {};
  struct stat named {};
  if (fstat(folder.get(), &locked) != 0 || lstat(path.c_str(), &named) != 0) {
    return {};
  }
  if (locked.st_ino != named.st_ino || locked.st_dev != named.st_dev) {
    errno = ENOENT;
    return {};
  }
  return folder;
}

TakenDraft::TakenDraft(std::string name, posix::UniqueFd folder)
    : name_(std::move(name)), folder_(std::move(folder)) {}

std::optional<TakenDraft> TakenDraft::lock(const std::string& name) {
  posix::UniqueFd folder = locked_folder(taken_folder() + "/" + name);
  if (!folder && errno != EWOULDBLOCK && errno != ENOENT) {
    throw ComposeError(std::string("its folder cannot be locked: ") + std::strerror(errno));
  }
  return folder ? std::optional(TakenDraft(name, std::move(folder))) : std::nullopt;
}

std::string TakenDraft::path() const {
  return taken_folder() + "/" + name_;
}

LeftOutFiles TakenDraft::left_out() const {
  std::string records;
  const int error = read_small_file(folder(), "left-out", records);
  LeftOutFiles files = LeftOutFiles::from_records(records);
  if (error != 0 && error != ENOENT) {
    files.add({"other files", std::string("their names cannot be read: ") + std::strerror(error)});
  }
  return files;
}

void TakenDraft::set_aside(const std::string& reason) const {
  // When this cannot be written, the next start sets it aside once more.
  static_cast<void>(write_small_file(
      folder(), kAside, foundation::printable(reason) + "\n" + mark_of(present_moment())));
}

bool TakenDraft::is_aside_too_long(const Moment& now) const {
  constexpr std::int64_t kKeptFor = std::int64_t{30} * 24 * 60 * 60;
  struct stat status {};
  std::string note;
  return fstatat(folder(), kAside, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         read_small_file(folder(), kAside, note) == 0 &&
         age_of(after_first_line(note), status, now) >= kKeptFor;
}

// Under a hidden name first: a folder of which only a part is left must not be taken for a draft.
int TakenDraft::remove() {
  const posix::UniqueFd taken(open(taken_folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::string hidden = "." + name_;
  static_cast<void>(posix::remove_item(taken.get(), hidden));  // what an earlier removal left
  if (renameat(taken.get(), name_.c_str(), taken.get(), hidden.c_str()) != 0) {
    return errno;
  }
  const int error = posix::remove_item(taken.get(), hidden);
  folder_.reset();
  return error;
}

int TakenDraft::keep() {
  if (!folder_) {
    return 0;
  }
  unlinkat(folder(), kOffered, 0);  // of an offer that was not made
  if (rename_to_given() == 0) {
    folder_.reset();
    return 0;
  }
  return remove();  // it is all in the message file
}

int TakenDraft::rename_to_given() const {
  return posix::rename_exclusively(AT_FDCWD, path(), AT_FDCWD, given_folder() + "/" + name_);
}

posix::UniqueFd TakenDraft::move_to_given() {
  int error = write_small_file(folder(), kOffered, mark_of(present_moment()));
  if (error == 0) {
    error = rename_to_given();
  }
  if (error != 0) {
    throw ComposeError("its files cannot be prepared: " + std::string(std::strerror(error)));
  }
  return std::move(folder_);
}

std::optional<std::string> why_aside(const std::string& draft) {
  if (!is_aside(draft)) {
    return std::nullopt;
  }
  const posix::UniqueFd folder = posix::open_folder(AT_FDCWD, taken_folder() + "/" + draft);
  std::string note;
  const int error = read_small_file(folder.get(), kAside, note);
  return error == 0 ? first_line(note)
                    : std::string("the reason cannot be read: ") + std::strerror(error);
}

std::vector<std::string> taken_drafts() {
  std::vector<std::string> names = names_in(taken_folder());
  std::erase_if(names, [](const std::string& name) { return !is_draft_name(name); });
  std::ranges::sort(names, is_older);
  return names;
}

std::vector<std::string> waiting_drafts() {
  std::vector<std::string> names = taken_drafts();
  std::erase_if(names, is_aside);
  return names;
}

}  // namespace quoll::compose
