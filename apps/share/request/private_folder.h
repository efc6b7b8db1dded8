#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// A folder with mode 0700 under ${TMPDIR:-/tmp} for bytes that came without a file. It goes with
/// all that is in it when this object goes, and when the process ends in any other way too, killed
/// or confined: a small process of its own makes it and waits for that. To be made while there is
/// one thread.
class PrivateFolder {
 public:
  /// Null with `errno` set when there can be none.
  [[nodiscard]] static std::unique_ptr<PrivateFolder> make();

  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  /// Returns when the folder is gone.
  ~PrivateFolder();

  [[nodiscard]] const std::string& path() const { return path_; }

  /// Makes an empty file of that name, in a folder of its own so that names stay as they are. The
  /// handle is empty, with `errno` set, when that fails.
  [[nodiscard]] posix::UniqueFd create(std::string_view name, std::string& file_path);

 private:
  PrivateFolder(std::string path, posix::UniqueFd alive, pid_t cleaner)
      : path_(std::move(path)), alive_(std::move(alive)), cleaner_(cleaner) {}

  std::string path_;
  /// One end of a socket; the cleaner works when it is closed.
  posix::UniqueFd alive_;
  pid_t cleaner_;
  int count_ = 0;
};

}  // namespace quoll::share
