#pragma once

#include <string>
#include <vector>

#include "tests/crash/stepper.h"

namespace quoll::crash {

/// A way in which a call can go wrong on a kernel, a disk or a machine that is short of something.
struct Fault {
  std::string name;  // "openat EMFILE", "read short"
  Step step;
};

/// The faults that this call can have: the errors EIO, ENOSPC, EMFILE, ENOMEM and EINTR where the
/// call is documented to give them, and half the count where it may do less than it was asked for.
[[nodiscard]] std::vector<Fault> faults_of(const Call& call);

/// Its name when it has faults, else its number.
[[nodiscard]] std::string name_of_call(const Call& call);

/// True for a call that gives a file bytes, attributes or a name, or takes its name away.
[[nodiscard]] bool changes_a_file(const Call& call);

/// True for one that needs what not every file system has: unnamed files, copies inside the file
/// system.
[[nodiscard]] bool needs_modern_files(const Call& call);

/// True when the dynamic loader makes it.
[[nodiscard]] bool is_of_loader(const Call& call);

}  // namespace quoll::crash
