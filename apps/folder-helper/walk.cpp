#include "apps/folder-helper/walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "quoll/foundation/text.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/file_kind.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::folder_helper {

namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};
using FolderHandle = std::unique_ptr<DIR, CloseFolder>;

/// A folder that is being visited.
struct Level {
  FolderHandle folder;
  std::string path;
  std::vector<std::string> names;  ///< of what is still to be visited, the next one last
};

class Walk {
 public:
  Walk(const struct stat& output, Visitor& visitor) : output_(output), visitor_(visitor) {}

  void run(int folder, const std::string& name) {
    enter(folder, ".", name);
    if (levels_.empty()) {
      throw PackError(posix::error_words(errno));
    }
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.names.empty()) {
        levels_.pop_back();
        continue;
      }
      const std::string next = std::move(level.names.back());
      level.names.pop_back();
      visit(dirfd(level.folder.get()), next, level.path + "/" + next);
    }
  }

 private:
  void visit(int parent, const std::string& name, const std::string& path) {
    struct stat status {};
    if (!foundation::is_utf8(name)) {
      visitor_.left_out(path, "its name is not UTF-8");
    } else if (fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
      visitor_.left_out(path, posix::error_words(errno));
    } else if (S_ISDIR(status.st_mode)) {
      if (levels_.size() > kDepth) {
        visitor_.left_out(path, "it lies inside too many folders");
      } else if (!enter(parent, name, path)) {
        visitor_.left_out(path, posix::error_words(errno));
      }
    } else if (const auto kind = posix::other_kind(status.st_mode)) {
      visitor_.left_out(path, *kind);
    } else if (status.st_dev != output_.st_dev || status.st_ino != output_.st_ino) {
      bytes_ += static_cast<std::uint64_t>(status.st_size);
      if (bytes_ > kMostBytes) {
        throw PackError("there is more than 4 GiB in it");
      }
      visitor_.file(path, status, parent, name.c_str());
    }
  }

  /// False, with `errno` set, when the folder cannot be listed.
  bool enter(int parent, const std::string& name, const std::string& path) {
    posix::UniqueFd fd = posix::open_file_at(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    struct stat status {};
    if (!fd || fstat(fd.get(), &status) != 0) {
      return false;
    }
    Level level{FolderHandle(fdopendir(fd.get())), path, {}};
    if (!level.folder) {
      return false;
    }
    static_cast<void>(fd.release());
    if (!list(level)) {
      return false;
    }
    visitor_.folder(path, status);
    levels_.push_back(std::move(level));
    return true;
  }

  bool list(Level& level) {
    errno = 0;
    while (const dirent* const entry = readdir(level.folder.get())) {
      const std::string_view name = entry->d_name;
      if (name == "." || name == "..") {
        continue;
      }
      if (++entries_ > kMostEntries) {
        throw PackError("there are more than 100,000 files and folders in it");
      }
      level.names.emplace_back(name);
      errno = 0;
    }
    if (errno != 0) {
      return false;
    }
    std::ranges::sort(level.names, std::greater());
    return true;
  }

  const struct stat& output_;
  Visitor& visitor_;
  std::vector<Level> levels_;
  std::size_t entries_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace

void walk(int folder, const std::string& name, const struct stat& output, Visitor& visitor) {
  Walk(output, visitor).run(folder, name);
}

}  // namespace quoll::folder_helper
