#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/linux/posix/temporary_item.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// The files of a share that lie ready to be staged: copies of what was picked, and bytes that came
/// without a file. They lie in a folder of this user alone in the group container, so that they are
/// staged by a move. The folder is made with the first file and goes with this object; what a
/// killed share left, the next one sweeps.
class PreparedFiles {
 public:
  /// `container` is the path of the group container.
  explicit PreparedFiles(std::string container) : container_(std::move(container)) {}

  struct File {
    posix::UniqueFd fd;  ///< open for writing; none, with `errno` set, when there can be no file
    std::string path;
  };
  /// Makes an empty file of that name, in a folder of its own so that names stay as they are. The
  /// user's umask takes away from its mode.
  [[nodiscard]] File make(std::string_view name, mode_t mode = 0600);
  /// The path for a file of that name, in a new folder; none, with `errno` set, when there can be
  /// none.
  [[nodiscard]] std::optional<std::string> make_place(std::string_view name);

  /// True for the path of one of them.
  [[nodiscard]] bool holds(std::string_view path) const {
    return folder_ && path.starts_with(folder_->path() + "/");
  }

 private:
  std::string container_;
  std::unique_ptr<posix::TemporaryItem> folder_;
  int count_ = 0;
};

}  // namespace quoll::share
