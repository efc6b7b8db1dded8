#pragma once

#include <cstdint>
#include <string>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::sandbox {

/// What a process may do with files, the network and other processes from now on, as far as the
/// kernel has such rules (Landlock). Only what is listed is allowed. What is open already stays
/// open.
///
/// These rules do not cover the status, mode, owner, times and attributes of files, nor sockets
/// with a path. `CallFilter` is for these.
class PathRules {
 public:
  enum class Access {
    kReadFile,   ///< read one regular file; nothing is allowed if the path is anything else
    kRead,       ///< read a file, or list a folder and read everything in it
    kWriteFile,  ///< read and write a file
    kChange,     ///< read, write, make, move and remove files and folders in a folder
    kExecute     ///< read a file and start it as a program
  };

  /// Makes the rules for this version of Landlock. The first version is not used: it forbids every
  /// move of a file from one folder to another.
  explicit PathRules(int version = kernel_version());

  /// Allows a path. A path that does not exist is ignored. Links are followed now: the rule holds
  /// for the file that is there, whatever the path leads to later.
  void allow(const std::string& path, Access access);
  /// The same for what is open already.
  void allow(int entry, Access access);

  /// Applies the rules to the calling thread and to what it starts. Answers 0 or an `errno` value.
  [[nodiscard]] int enforce();

  [[nodiscard]] static int kernel_version();
  /// The first version that has everything used here.
  static constexpr int kWholeVersion = 6;

 private:
  std::uint64_t known_ = 0;
  posix::UniqueFd fd_;
  int failure_ = 0;
};

}  // namespace quoll::sandbox
