#include "quoll/linux/posix/remove_item.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::posix {

namespace {

/// Empties a tree of folders without recursion: it may be deeper than the stack.
class Removal {
 public:
  explicit Removal(UniqueFd top) : cursor_(std::move(top)) {}

  /// Answers the first failure, or 0.
  int empty() {
    remove_files("");
    while (true) {
      if (!levels_.back().folders.empty()) {
        const std::string name = std::move(levels_.back().folders.back());
        levels_.back().folders.pop_back();
        enter(name);
        continue;
      }
      const std::string name = std::move(levels_.back().name);
      levels_.pop_back();
      if (levels_.empty()) {
        return first_;
      }
      UniqueFd left;
      if (const int number = cursor_.leave(left)) {
        note(number);
        return first_;
      }
      if (::unlinkat(cursor_.fd(), name.c_str(), AT_REMOVEDIR) != 0) {
        note(errno);
      }
    }
  }

 private:
  struct Level {
    std::string name;
    std::vector<std::string> folders;
  };

  void note(int number) {
    if (first_ == 0 && number != ENOENT) {  // what somebody else removed is removed
      first_ = number;
    }
  }

  void enter(const std::string& name) {
    int number = cursor_.enter(name);
    if (number == EACCES &&
        ::fchmodat(cursor_.fd(), name.c_str(), S_IRWXU, AT_SYMLINK_NOFOLLOW) == 0) {
      number = cursor_.enter(name);
    }
    if (number != 0) {
      note(number);
      return;
    }
    remove_files(name);
  }

  /// Removes what is not a folder from the folder at which the cursor stands, and notes the rest.
  void remove_files(const std::string& folder_name) {
    struct stat status {};
    if (::fstat(cursor_.fd(), &status) == 0 && (status.st_mode & S_IRWXU) != S_IRWXU) {
      ::fchmod(cursor_.fd(), S_IRWXU);  // our own folder that we may not change otherwise
    }
    Level level{folder_name, {}};
    std::vector<std::string> names;
    if (const int number = list_folder(cursor_.fd(), names)) {
      note(number);
    }
    for (std::string& name : names) {
      if (::unlinkat(cursor_.fd(), name.c_str(), 0) == 0) {
        continue;
      }
      if (errno == EISDIR) {
        level.folders.push_back(std::move(name));
      } else {
        note(errno);
      }
    }
    levels_.push_back(std::move(level));
  }

  FolderCursor cursor_;
  std::vector<Level> levels_;
  int first_ = 0;
};

}  // namespace

int remove_item(int parent, const std::string& name) {
  if (::unlinkat(parent, name.c_str(), 0) == 0) {
    return 0;
  }
  if (errno != EISDIR) {
    return errno;
  }
  UniqueFd top = open_folder(parent, name);
  if (!top && errno == EACCES &&
      ::fchmodat(parent, name.c_str(), S_IRWXU, AT_SYMLINK_NOFOLLOW) == 0) {
    top = open_folder(parent, name);
  }
  if (!top) {
    return errno;
  }
  const int first = Removal(std::move(top)).empty();
  const int last = ::unlinkat(parent, name.c_str(), AT_REMOVEDIR) == 0 ? 0 : errno;
  return first != 0 ? first : last;
}

}  // namespace quoll::posix
