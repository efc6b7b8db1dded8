#include "quoll/linux/posix/folder_cursor.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>

#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::posix {

UniqueFd open_folder(int parent, const std::string& name) {
  return open_file_at(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
}

FileIdentity identity_of(int fd) {
  struct stat status {};
  return ::fstat(fd, &status) == 0 ? FileIdentity{status.st_dev, status.st_ino} : FileIdentity{};
}

namespace {

/// False for a link that leads nowhere. Only what may be a link costs a look at the disk.
bool exists(int folder, const dirent& entry) {
  if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) {
    return true;
  }
  struct stat status {};
  return ::fstatat(folder, entry.d_name, &status, 0) == 0;
}

}  // namespace

int list_folder(int folder, std::vector<std::string>& names, Listed which) {
  // Opened anew: a descriptor that names the folder only will do, and its offset stays.
  UniqueFd opened = open_folder(folder, ".");
  if (!opened) {
    return errno;
  }
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(::fdopendir(opened.get()), &::closedir);
  if (!stream) {
    return errno;
  }
  (void)opened.release();  // the stream's now
  while (true) {
    errno = 0;
    const dirent* entry = ::readdir(stream.get());
    if (entry == nullptr) {
      return errno;
    }
    const std::string_view name = entry->d_name;
    if (name != "." && name != ".." && (which == Listed::kAll || exists(folder, *entry))) {
      names.emplace_back(name);
    }
  }
}

FolderCursor::FolderCursor(UniqueFd folder)
    : folder_(std::move(folder)), here_(identity_of(folder_.get())) {}

int FolderCursor::enter(const std::string& name) {
  UniqueFd folder = open_folder(folder_.get(), name);
  if (!folder) {
    return errno;
  }
  above_.push_back(std::exchange(here_, identity_of(folder.get())));
  folder_ = std::move(folder);
  return 0;
}

int FolderCursor::leave(UniqueFd& left) {
  UniqueFd folder = open_folder(folder_.get(), "..");
  if (!folder) {
    return errno;
  }
  if (above_.empty() || identity_of(folder.get()) != above_.back()) {
    return ESTALE;
  }
  here_ = above_.back();
  above_.pop_back();
  left = std::exchange(folder_, std::move(folder));
  return 0;
}

}  // namespace quoll::posix
