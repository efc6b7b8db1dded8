#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::posix {

/// Which file it is, whatever its name.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// The identity of an open file; all zeros when it cannot be told.
[[nodiscard]] FileIdentity identity_of(int fd);

/// Opens a folder for reading, never through a link; none with `errno` set.
[[nodiscard]] UniqueFd open_folder(int parent, const std::string& name);

/// Which names of a folder are listed.
enum class Listed {
  kAll,
  kExisting,  ///< without links that lead nowhere
};

/// The names in an open folder without "." and "..", in no order. Answers 0 or an `errno` value.
[[nodiscard]] int list_folder(int folder, std::vector<std::string>& names,
                              Listed which = Listed::kAll);

/// A place in a tree of folders. It goes down by name, never through a link, and up again, and
/// holds one descriptor however deep it is.
class FolderCursor {
 public:
  /// `folder` is open for reading and is the top of the tree.
  explicit FolderCursor(UniqueFd folder);

  /// The folder at which the cursor stands.
  [[nodiscard]] int fd() const { return folder_.get(); }
  [[nodiscard]] FileIdentity identity() const { return here_; }

  /// Goes into a sub-folder. Answers 0 or an `errno` value; then the cursor stays where it is.
  [[nodiscard]] int enter(const std::string& name);
  /// Goes back up; `left` gets the folder that was left. Fails with `ESTALE` when somebody moved
  /// the folder out of the tree meanwhile.
  [[nodiscard]] int leave(UniqueFd& left);

 private:
  UniqueFd folder_;
  FileIdentity here_;
  std::vector<FileIdentity> above_;
};

}  // namespace quoll::posix
