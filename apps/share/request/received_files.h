#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoll/linux/posix/temporary_item.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// The files of a share for bytes that came without one. They lie in a folder of this user alone in
/// the group container, so that they are staged within one file system. The folder is made with the
/// first file and goes with this object; what a killed share left, the next one sweeps.
class ReceivedFiles {
 public:
  /// `container` is the path of the group container.
  explicit ReceivedFiles(std::string container) : container_(std::move(container)) {}

  struct File {
    posix::UniqueFd fd;  ///< open for writing; none, with `errno` set, when there can be no file
    std::string path;
  };
  /// Makes an empty file of that name, in a folder of its own so that names stay as they are.
  [[nodiscard]] File make(std::string_view name);

 private:
  std::string container_;
  std::unique_ptr<posix::TemporaryItem> folder_;
  int count_ = 0;
};

}  // namespace quoll::share
