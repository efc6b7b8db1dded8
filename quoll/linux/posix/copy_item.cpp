#include "quoll/linux/posix/copy_item.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <string_view>
#include <utility>
#include <vector>

#include "quoll/foundation/path.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/file_contents.h"
#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/paths.h"
#include "quoll/linux/posix/temporary_item.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::posix {

namespace {

/// Opening for reading never waits, neither for the other end of a pipe nor for a terminal.
constexpr int kSourceFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY;

/// What it means that writing ended with this `errno` value; 0 is success.
Outcome writing_ended(int number) {
  return number == 0 ? Outcome() : FileFailure{number, true};
}

FileFailure refused(std::string_view path, std::string_view why) {
  std::string text = "“";
  text.append(foundation::last_path_component(path)).append("” couldn’t be copied ").append(why);
  return {EINVAL, false, text};
}

FileFailure neither_file_nor_folder(std::string_view path) {
  return refused(path, "because it is neither a file nor a folder.");
}

Outcome fill_file(int from, int to, const CopyStep& step = nullptr) {
  struct stat status {};
  if (::fstat(from, &status) != 0) {
    return FileFailure{errno, false};
  }
  if (auto failure = copy_contents(from, to, step)) {
    return failure;
  }
  keep_attributes(from, status, to);
  // No fsync: who reads the copy next runs on this machine and sees what is in memory; waiting for
  // the disk would make every share as slow as the disk. After a power cut the share is gone
  // anyway.
  return writing_ended(late_write_error(to));
}

Outcome copy_inner_file(int from_folder, int to_folder, const std::string& name) {
  const UniqueFd from = open_file_at(from_folder, name, kSourceFlags | O_NOFOLLOW);
  struct stat status {};
  if (!from || ::fstat(from.get(), &status) != 0) {
    return FileFailure{errno, false};
  }
  if (!S_ISREG(status.st_mode)) {
    return neither_file_nor_folder(name);
  }
  const UniqueFd to =
      open_file_at(to_folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, S_IRUSR | S_IWUSR);
  if (!to) {
    return FileFailure{errno, true};
  }
  return fill_file(from.get(), to.get());
}

Outcome copy_link(int from_folder, const struct stat& status, int to_folder,
                  const std::string& name) {
  std::array<char, PATH_MAX + 1> target{};
  if (::readlinkat(from_folder, name.c_str(), target.data(), target.size() - 1) < 0) {
    return FileFailure{errno, false};
  }
  if (::symlinkat(target.data(), to_folder, name.c_str()) != 0) {
    return FileFailure{errno, true};
  }
  const std::array times{status.st_atim, status.st_mtim};
  ::utimensat(to_folder, name.c_str(), times.data(), AT_SYMLINK_NOFOLLOW);
  return std::nullopt;
}

/// Copies a tree of folders without recursion: it may be deeper than the stack.
class TreeCopy {
 public:
  TreeCopy(UniqueFd source, UniqueFd destination)
      : source_(std::move(source)),
        destination_(std::move(destination)),
        built_(destination_.identity()) {}

  /// All but the attributes of the topmost folder.
  Outcome run() {
    if (auto failure = copy_files()) {
      return failure;
    }
    while (true) {
      Outcome failure;
      if (!folders_.back().empty()) {
        const std::string name = std::move(folders_.back().back());
        folders_.back().pop_back();
        failure = enter(name);
      } else {
        folders_.pop_back();
        if (folders_.empty()) {
          return std::nullopt;
        }
        failure = leave();
      }
      if (failure) {
        return failure;
      }
    }
  }

  [[nodiscard]] int source() const { return source_.fd(); }

 private:
  Outcome enter(const std::string& name) {
    if (const int number = source_.enter(name)) {
      return FileFailure{number, false};
    }
    if (source_.identity() == built_) {
      return refused(name, "into itself.");
    }
    if (::mkdirat(destination_.fd(), name.c_str(), S_IRWXU) != 0) {
      return FileFailure{errno, true};
    }
    if (const int number = destination_.enter(name)) {
      return FileFailure{number, true};
    }
    return copy_files();
  }

  Outcome leave() {
    UniqueFd from;
    UniqueFd to;
    if (const int number = source_.leave(from)) {
      return FileFailure{number, false};
    }
    if (const int number = destination_.leave(to)) {
      return FileFailure{number, true};
    }
    // Only now: its files changed its times, and its mode may forbid to change it.
    struct stat status {};
    if (::fstat(from.get(), &status) == 0) {
      keep_attributes(from.get(), status, to.get());
    }
    return std::nullopt;
  }

  /// Copies what is not a folder in the folder at which the cursors stand, and notes the rest.
  Outcome copy_files() {
    std::vector<std::string> names;
    if (const int number = list_folder(source_.fd(), names)) {
      return FileFailure{number, false};
    }
    std::vector<std::string> folders;
    for (std::string& name : names) {
      struct stat status {};
      if (::fstatat(source_.fd(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return FileFailure{errno, false};
      }
      Outcome failure;
      if (S_ISDIR(status.st_mode)) {
        folders.push_back(std::move(name));
      } else if (S_ISLNK(status.st_mode)) {
        failure = copy_link(source_.fd(), status, destination_.fd(), name);
      } else if (S_ISREG(status.st_mode)) {
        failure = copy_inner_file(source_.fd(), destination_.fd(), name);
      } else {
        failure = neither_file_nor_folder(name);
      }
      if (failure) {
        return failure;
      }
    }
    folders_.push_back(std::move(folders));
    return std::nullopt;
  }

  FolderCursor source_;
  FolderCursor destination_;
  FileIdentity built_;
  /// The sub-folders still to be copied, for each folder from the top down to the cursors.
  std::vector<std::vector<std::string>> folders_;
};

/// Where a copy goes.
struct Destination {
  std::string path;
  UniqueFd folder;
  std::string name;
};

/// True when the folder is `above` or lies inside it, by whatever links it was reached.
bool lies_inside(int folder, const FileIdentity& above) {
  constexpr int kFlags = O_PATH | O_DIRECTORY;
  UniqueFd here = open_file_at(folder, ".", kFlags);
  while (here) {
    const FileIdentity identity = identity_of(here.get());
    if (identity == above) {
      return true;
    }
    UniqueFd parent = open_file_at(here.get(), "..", kFlags);
    if (parent && identity_of(parent.get()) == identity) {
      return false;  // the root
    }
    here = std::move(parent);
  }
  return false;
}

Outcome copy_folder(UniqueFd from, const std::string& source, const Destination& to) {
  struct stat status {};
  if (::fstat(from.get(), &status) != 0) {
    return FileFailure{errno, false};
  }
  if (lies_inside(to.folder.get(), identity_of(from.get()))) {
    return refused(source, "into itself.");
  }
  BuildingFolder building = open_building_folder(to.path, to.folder.get());
  if (!building.fd) {
    return FileFailure{errno, true};
  }
  TemporaryItem item(std::move(building));
  if (const int number = item.make_folder()) {
    return FileFailure{number, true};
  }
  UniqueFd top(::fcntl(item.fd(), F_DUPFD_CLOEXEC, 0));
  if (!top) {
    return FileFailure{errno, true};
  }
  TreeCopy copy(std::move(from), std::move(top));
  if (auto failure = copy.run()) {
    return failure;
  }
  if (const int number = item.place(to.folder.get(), to.name)) {
    return FileFailure{number, true};
  }
  // After it has moved: a folder that must not be written cannot be moved to another one.
  keep_attributes(copy.source(), status, item.fd());
  return std::nullopt;
}

Outcome copy_under_hidden_name(int from, const Destination& to, const CopyStep& step) {
  BuildingFolder building = open_building_folder(to.path, to.folder.get());
  if (!building.fd) {
    return FileFailure{errno, true};
  }
  TemporaryItem item(std::move(building));
  if (const int number = item.make_file(S_IRUSR | S_IWUSR)) {
    return FileFailure{number, true};
  }
  if (auto failure = fill_file(from, item.fd(), step)) {
    return failure;
  }
  return writing_ended(item.place(to.folder.get(), to.name));
}

Outcome copy_file(int from, const Destination& to, const CopyStep& step) {
  const UniqueFd unnamed =
      open_file_at(to.folder.get(), ".", O_TMPFILE | O_WRONLY, S_IRUSR | S_IWUSR);
  if (unnamed) {
    if (auto failure = fill_file(from, unnamed.get(), step)) {
      return failure;
    }
    const std::string link = "/proc/self/fd/" + std::to_string(unnamed.get());
    if (::linkat(AT_FDCWD, link.c_str(), to.folder.get(), to.name.c_str(), AT_SYMLINK_FOLLOW) ==
        0) {
      return std::nullopt;
    }
    if (errno == EEXIST) {
      return FileFailure{EEXIST, true};
    }
  }
  // No unnamed files here, or none that can be named (without /proc): whatever is really wrong with
  // the folder, the other way meets it again and tells.
  return copy_under_hidden_name(from, to, step);
}

Outcome open_source(const std::string& path, UniqueFd& from, bool& is_folder) {
  // Looked at before it is opened, since opening a device may do something to it.
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    return FileFailure{errno, false};
  }
  if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) {
    from = open_file(path, kSourceFlags);
    if (!from || ::fstat(from.get(), &status) != 0) {
      return FileFailure{errno, false};
    }
  }
  is_folder = S_ISDIR(status.st_mode);
  return is_folder || S_ISREG(status.st_mode) ? Outcome() : neither_file_nor_folder(path);
}

Outcome open_destination(const std::string& path, Destination& to) {
  ParentAndName entry = parent_and_name(path);
  to.path = path;
  to.name = std::move(entry.name);
  to.folder = open_file(entry.parent, O_PATH | O_DIRECTORY);
  if (!to.folder) {
    return FileFailure{errno, true};
  }
  // Told before a large file is copied in vain; the name is taken exclusively all the same.
  struct stat status {};
  if (to.name.empty() ||
      ::fstatat(to.folder.get(), to.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    return FileFailure{EEXIST, true};
  }
  return errno == ENOENT ? Outcome() : FileFailure{errno, true};
}

}  // namespace

Outcome copy_item(const std::string& source, const std::string& destination, const CopyStep& step) {
  UniqueFd from;
  bool is_folder = false;
  if (auto failure = open_source(source, from, is_folder)) {
    return failure;
  }
  Destination to;
  if (auto failure = open_destination(destination, to)) {
    return failure;
  }
  return is_folder ? copy_folder(std::move(from), source, to) : copy_file(from.get(), to, step);
}

}  // namespace quoll::posix
