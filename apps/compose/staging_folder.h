#pragma once

#include <string>

#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {

/// A file that a command names, or why it is left out of the draft.
struct StagedFile {
  posix::UniqueFd fd;  ///< open for reading; none when it is left out
  posix::FileIdentity identity;
  std::string reason;
};

/// The staging folder of the group container. A command may come from any web page, so this class
/// alone opens what a command names: the regular files of this user below the folder. From the
/// container down no link is followed, not even when the staging folder itself is one; and it is
/// the open file that is looked at, not its name.
class StagingFolder {
 public:
  /// When there is no staging folder, every file is left out.
  StagingFolder();

  /// Opens the file with this path, as the command has it.
  [[nodiscard]] StagedFile open(const std::string& path) const;

 private:
  std::string path_;  ///< with a slash at its end; empty without a container
  posix::UniqueFd folder_;
  int error_ = 0;  ///< why the folder could not be opened, an `errno` value
};

}  // namespace quoll::compose
