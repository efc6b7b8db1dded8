#include "apps/console/staged_copies.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "apps/share/container_trouble.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/group_containers.h"

namespace quoll::console {

namespace {

using Names = std::vector<std::string>;

/// Counts the files of one folder; `folders` gets its sub-folders. Answers 0 or an `errno` value.
int count_files(int folder, StagedCopies& copies, Names& folders) {
  Names names;
  if (const int error = posix::list_folder(folder, names)) {
    return error;
  }
  for (std::string& name : names) {
    struct stat status {};
    if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
      if (errno != ENOENT) {  // a share that begins removes them
        return errno;
      }
    } else if (S_ISDIR(status.st_mode)) {
      folders.push_back(std::move(name));
    } else {
      ++copies.files;
      copies.bytes += S_ISREG(status.st_mode) ? static_cast<std::uintmax_t>(status.st_size) : 0;
    }
  }
  return 0;
}

/// Counts all below a folder without recursion: the tree may be deeper than the stack.
int count_tree(posix::UniqueFd top, StagedCopies& copies) {
  posix::FolderCursor cursor(std::move(top));
  std::vector<Names> levels(1);
  int error = count_files(cursor.fd(), copies, levels.back());
  while (error == 0) {
    if (!levels.back().empty()) {
      const std::string name = std::move(levels.back().back());
      levels.back().pop_back();
      error = cursor.enter(name);
      if (error == 0) {
        error = count_files(cursor.fd(), copies, levels.emplace_back());
      }
      continue;
    }
    levels.pop_back();
    if (levels.empty()) {
      return 0;
    }
    posix::UniqueFd left;
    error = cursor.leave(left);
  }
  return error;
}

}  // namespace

StagedCopies staged_copies() {
  const auto containers = posix::group_containers_folder();
  if (!containers) {
    return {};
  }
  const std::string name = ExtensionUtilities::GroupFolderName();
  const std::string container =
      foundation::appending_path_component(*containers, ExtensionUtilities::application_group);
  const std::string data = foundation::appending_path_component(container, name);
  StagedCopies copies;
  copies.folder = foundation::appending_path_component(data, container::layout::staging);
  // The container itself may be a link, made by its owner.
  const auto group = posix::open_file(container, O_PATH | O_DIRECTORY);
  const auto above = group ? posix::open_folder(group.get(), name) : posix::UniqueFd();
  auto folder = above ? posix::open_folder(above.get(), std::string(container::layout::staging))
                      : posix::UniqueFd();
  const int error = folder ? count_tree(std::move(folder), copies) : errno;
  if (error != 0 && error != ENOENT) {
    const std::string& place = group && !above ? data : copies.folder;
    copies.trouble = place + " cannot be read: " + posix::error_words(error);
    copies.advice =
        error == EACCES ? share::permission_advice(place) : "see what it is, and move it away";
  }
  return copies;
}

std::string in_words(const StagedCopies& copies) {
  constexpr std::uintmax_t kKibibyte = 1024;
  return std::to_string(copies.files) + (copies.files == 1 ? " file (" : " files (") +
         std::to_string((copies.bytes + kKibibyte - 1) / kKibibyte) + " KiB)";
}

}  // namespace quoll::console
