#pragma once

#include <string>
#include <vector>

namespace quoll::sandbox {

/// What a program that shares means to use from now on: absolute paths. What does not exist when
/// `confine` is called is left out.
struct Confinement {
  /// Regular files, read. The file that is there now is meant, not what the path leads to later.
  std::vector<std::string> readable;
  /// Folders with all that is in them: read, written, made, renamed, linked and removed.
  std::vector<std::string> writable;
  /// Programs: read and started.
  std::vector<std::string> executable;
};

/// Takes everything else away from this process and from all that it starts, for good, as far as
/// the kernel can: other files (Landlock), and every system call that sharing does not need
/// (seccomp). No socket can be made or connected, no process can be traced, none that ran before
/// can be signalled, and the modes, owners, times and attributes of files are changed only through
/// an open descriptor. What every program needs to load libraries and to know the time zone stays.
///
/// Not taken away: what is open already, and the status of files. A file cannot be hard-linked out
/// of `readable`.
///
/// It binds the calling thread and the threads that start afterwards, so it is called before the
/// first. When the kernel does not offer all of it, one line is logged that says what is missing,
/// the program goes on with what there is, and the answer is false.
bool confine(const Confinement& wanted);

}  // namespace quoll::sandbox
