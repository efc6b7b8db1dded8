#pragma once

#include <cstdint>

#include "apps/sandbox/call_filter.h"

namespace quoll::compose {

/// The confinement of a process that writes one draft. Made once, and enforced in each process:
/// the list of system calls need not be put together again.
///
/// The process reads below the folder of its draft, and writes to one open descriptor. It makes
/// and removes no file, starts no process and no program, makes no socket, and signals and traces
/// nobody. Its memory, its time and what it writes are limited. As far as the kernel can: see
/// `sandbox::PathRules` and `sandbox::CallFilter`.
class WriterConfinement {
 public:
  WriterConfinement();

  /// Confines this process for good. `file_bytes` is what all files of the draft had when
  /// they were taken; the time depends on it, and what may be written.
  void enforce(int taken_folder, std::uint64_t file_bytes);

  /// The same for a process that reads for a person what a writer wrote: it reads below this folder
  /// and what is open, and writes to what is open. -1 stands for no folder.
  void enforce_reading(int folder, std::uint64_t file_bytes);

  /// Once enforced: true when files may not even become as large as that, by the user's own limit.
  [[nodiscard]] bool is_file_limit_users() const { return is_file_limit_users_; }

 private:
  sandbox::CallFilter calls_;
  bool is_file_limit_users_ = false;
};

/// Ends this process when the thread that forked it ends. `parent` is its process.
void end_with(int parent);

}  // namespace quoll::compose
