#pragma once

#include <string>
#include <vector>

namespace quoll::posix {

/// What a program means to use from now on: absolute paths of files or folders, a folder with all
/// that is in it. A path that does not exist when `confine` is called is left out.
struct Confinement {
  /// Read, and folders listed.
  std::vector<std::string> readable;
  /// Read, written, made, renamed, linked and removed.
  std::vector<std::string> writable;
  /// Read and started as programs.
  std::vector<std::string> executable;
};

/// Takes everything else away from this process and from all that it starts, for good, as far as
/// the kernel can (Landlock): other files cannot be opened, made or removed, no TCP connection can
/// be made or taken, no process that ran before can be signalled. What every program needs to load
/// libraries, read locales and time zones stays.
///
/// Not taken away: what is open already, connections over Unix sockets, the status and the modes of
/// files. A file cannot be hard-linked out of `readable`.
///
/// It binds the calling thread and the threads that start afterwards, so it is called before the
/// first. When the kernel cannot do it, one line is logged, the program goes on as it is, and the
/// answer is false.
bool confine(const Confinement& wanted);

}  // namespace quoll::posix
