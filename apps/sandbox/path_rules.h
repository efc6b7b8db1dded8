#pragma once

#include <cstdint>
#include <string>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::sandbox {

/// What a process can do with files, network and other processes from now on, as far as the kernel
/// knows such rules (Landlock). Nothing is allowed but what is listed; what is open stays open.
///
/// Not ruled: the status of files, their modes, owners, times and attributes, sockets that are no
/// TCP sockets and have a path. A call filter is for these.
class PathRules {
 public:
  enum class Access {
    kReadFile,   ///< one regular file is read; anything else at the path is not allowed
    kRead,       ///< a file is read, or a folder listed and all that is in it read
    kWriteFile,  ///< a file is read and written
    kChange,     ///< a folder: all that is in it is read, written, made, moved, linked and removed
    kExecute     ///< a file is read and started as a program
  };

  /// The rules of a kernel of this version. The first version is of no use: it would forbid to move
  /// a file from one folder to another, wherever.
  explicit PathRules(int version = kernel_version());

  /// A path that does not exist is left out. Links are followed now: the rule holds for the file
  /// that is there, whatever the path leads to later.
  void allow(const std::string& path, Access access);

  /// Binds the calling thread and what it starts. Answers 0 or an `errno` value.
  [[nodiscard]] int enforce();

  [[nodiscard]] static int kernel_version();
  /// The first version that has all that is asked for here.
  static constexpr int kWholeVersion = 6;

 private:
  std::uint64_t known_ = 0;
  posix::UniqueFd fd_;
  int failure_ = 0;
};

}  // namespace quoll::sandbox
