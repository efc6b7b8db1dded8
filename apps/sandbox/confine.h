#pragma once

#include <string>
#include <vector>

namespace quoll::sandbox {

/// What a program that shares may use from now on, as absolute paths. A path that does not exist
/// when `confine` is called is ignored.
struct Confinement {
  /// Regular files that may be read. This means the file that is there now, not what the path leads
  /// to later.
  std::vector<std::string> readable;
  /// Folders that may be listed and in which all may be read. This means the folders that are there
  /// now.
  std::vector<std::string> listable = {};
  /// Folders in which files and folders may be read, written, made, moved and removed.
  std::vector<std::string> writable;
  /// Programs that may be read and started.
  std::vector<std::string> executable;
};

/// Confines this process and all that it starts, for good, as far as the kernel can: to the files
/// above (Landlock), and to the system calls that sharing needs (seccomp). It cannot make or
/// connect a socket, trace a process, or signal a process that ran before. It can change the modes,
/// times and attributes of files only through an open descriptor, and no owners. Libraries and the
/// time zone, which every program reads, stay readable.
///
/// Not affected: what is open already, and the status of files. No symbolic link can be made or
/// read, and no file that lies outside `writable` can be hard-linked into it.
///
/// Call it before the first thread is started: it binds the calling thread and those that start
/// later. When the kernel does not support all of it, one line in the log says what is missing, the
/// rest is applied, and the answer is false.
bool confine(const Confinement& wanted);

}  // namespace quoll::sandbox
