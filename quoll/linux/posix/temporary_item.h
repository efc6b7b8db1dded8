#pragma once

#include <sys/types.h>

#include <string>
#include <utility>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::posix {

/// An open folder in which something is built, and its path.
struct BuildingFolder {
  UniqueFd fd;
  std::string path;
};

/// The folder of a group container for what is still being made, made when it is missing. Without
/// it there is no descriptor and `errno` is set.
[[nodiscard]] BuildingFolder open_folder_for_building(const std::string& container);

/// The folder in which something on its way to `destination` is built: that of the group container
/// when the destination lies in a container and on the same file system, so that nobody who lists
/// the destination's folder sees it; else `beside`, the destination's folder. Without one there is
/// no descriptor and `errno` is set.
[[nodiscard]] BuildingFolder open_building_folder(const std::string& destination, int beside);

/// A file or folder under a hidden name: on its way to its own name, or kept for as long as this
/// object lives. It is removed, a folder with all that is in it, unless it is placed under its own
/// name. It is locked while it lives; what a killed process left is not, and can be swept.
class TemporaryItem {
 public:
  explicit TemporaryItem(BuildingFolder folder);
  TemporaryItem(const TemporaryItem&) = delete;
  TemporaryItem& operator=(const TemporaryItem&) = delete;
  ~TemporaryItem();

  /// Call one of these two first, once; they answer 0 or an `errno` value. A folder is for this
  /// user alone (0700).
  [[nodiscard]] int make_file(mode_t mode);
  [[nodiscard]] int make_folder();

  /// The file open for writing, or the folder open for reading.
  [[nodiscard]] int fd() const { return fd_.get(); }
  /// Gives the descriptor away, and the lock with it; once it was placed.
  [[nodiscard]] UniqueFd take_fd() { return std::move(fd_); }
  /// Where it lies until it is placed.
  [[nodiscard]] std::string path() const { return folder_.path + "/" + name_; }

  /// Gives it its name in one step; an existing entry is `EEXIST`.
  [[nodiscard]] int place(int folder, const std::string& name);
  /// Gives it its name in one step, taking the place of an existing file.
  [[nodiscard]] int place_over(int folder, const std::string& name);

 private:
  [[nodiscard]] int make(mode_t mode, bool is_folder);

  BuildingFolder folder_;
  UniqueFd fd_;
  /// Empty when there is nothing to remove.
  std::string name_;
};

/// Removes what killed processes left in the folder of a group container for what is still being
/// made. What somebody works on stays; nothing is made. Nowhere else is anything ever swept: a
/// file of a user may have any name, so a name does not show that a file is ours.
void sweep_temporary_items(const std::string& container);

}  // namespace quoll::posix
