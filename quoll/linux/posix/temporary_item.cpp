#include "quoll/linux/posix/temporary_item.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <utility>
#include <vector>

#include "quoll/container/layout.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/exclusive_rename.h"
#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/group_containers.h"
#include "quoll/linux/posix/paths.h"
#include "quoll/linux/posix/remove_item.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::posix {

namespace {

namespace layout = container::layout;

constexpr int kAttempts = 100;
constexpr int kFolderFlags = O_PATH | O_DIRECTORY;

std::string unfinished_path(const std::string& container) {
  return foundation::appending_path_component(container, layout::unfinished);
}

UniqueFd open_if_folder(const std::string& path) {
  return open_file(path, kFolderFlags | O_NOFOLLOW);
}

std::string hidden_name() {
  std::uint64_t number = 0;
  (void)!::getrandom(&number, sizeof number, 0);  // a name that is taken is tried again
  char digits[17];
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(number));
  return std::string(layout::unfinished_prefix) + digits;
}

bool lock_at_once(int fd) {
  return uninterrupted([&] { return ::flock(fd, LOCK_EX | LOCK_NB); }) == 0;
}

/// False when somebody who sweeps came between making and locking. (A file system without locks
/// locks out the sweepers as well.)
bool is_ours(int fd) {
  struct stat status {};
  return (lock_at_once(fd) || errno != EWOULDBLOCK) && ::fstat(fd, &status) == 0 &&
         status.st_nlink > 0;
}

UniqueFd make_entry(int folder, const std::string& name, mode_t mode, bool is_folder) {
  int flags = O_WRONLY | O_CREAT | O_EXCL;
  if (is_folder) {
    if (::mkdirat(folder, name.c_str(), mode) != 0) {
      return UniqueFd();
    }
    flags = O_RDONLY | O_DIRECTORY;
  }
  return open_file_at(folder, name, flags | O_NOFOLLOW, mode);
}

/// True when both folders lie in one mount of one file system. Within two mounts of it, as a bind
/// mount makes, they have one device, and still nothing moves from one to the other.
bool can_move_between(int folder, int other) {
  const auto place = [](int fd) {
    struct statx status {};
    static_cast<void>(::statx(fd, "", AT_EMPTY_PATH, STATX_MNT_ID, &status));
    return std::array<std::uint64_t, 3>{status.stx_mnt_id, status.stx_dev_major,
                                        status.stx_dev_minor};
  };
  return place(folder) == place(other);
}

}  // namespace

TemporaryItem::TemporaryItem(BuildingFolder folder) : folder_(std::move(folder)) {}

TemporaryItem::~TemporaryItem() {
  if (!name_.empty()) {
    (void)!remove_item(folder_.fd.get(), name_);
  }
}

int TemporaryItem::make_file(mode_t mode) {
  return make(mode, false);
}

int TemporaryItem::make_folder() {
  return make(S_IRWXU, true);
}

int TemporaryItem::make(mode_t mode, bool is_folder) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const std::string name = hidden_name();
    UniqueFd made = make_entry(folder_.fd.get(), name, mode, is_folder);
    if (made && is_ours(made.get())) {
      fd_ = std::move(made);
      name_ = name;
      return 0;
    }
    // A folder that was swept before it could be opened is ENOENT; so is a folder_ that is gone.
    if (!made && errno != EEXIST && !(is_folder && errno == ENOENT)) {
      return errno;
    }
  }
  return EBUSY;
}

// The coordinator keeps other writers away where the file system knows no exclusive rename.
int TemporaryItem::place(int folder, const std::string& name) {
  if (const int error = rename_exclusively(folder_.fd.get(), name_, folder, name)) {
    return error;
  }
  name_.clear();
  return 0;
}

int TemporaryItem::place_over(int folder, const std::string& name) {
  if (::renameat(folder_.fd.get(), name_.c_str(), folder, name.c_str()) != 0) {
    return errno;
  }
  name_.clear();
  return 0;
}

BuildingFolder open_folder_for_building(const std::string& container) {
  const std::string path = unfinished_path(container);
  ::mkdir(path.c_str(), S_IRWXU);  // it may exist; what else goes wrong shows at the next step
  return {open_if_folder(path), path};
}

BuildingFolder open_building_folder(const std::string& destination, int beside) {
  if (const auto location = locate_in_container(destination)) {
    BuildingFolder incoming = open_folder_for_building(location->container);
    if (incoming.fd && can_move_between(incoming.fd.get(), beside)) {
      return incoming;
    }
  }
  return {open_file_at(beside, ".", kFolderFlags), parent_and_name(destination).parent};
}

void sweep_temporary_items(const std::string& container) {
  const UniqueFd folder = open_if_folder(unfinished_path(container));
  std::vector<std::string> names;
  if (folder) {
    (void)!list_folder(folder.get(), names);
  }
  for (const std::string& name : names) {
    if (!name.starts_with(layout::unfinished_prefix)) {
      continue;
    }
    const UniqueFd left = open_file_at(folder.get(), name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    if (left && lock_at_once(left.get())) {
      (void)!remove_item(folder.get(), name);
    }
  }
}

}  // namespace quoll::posix
