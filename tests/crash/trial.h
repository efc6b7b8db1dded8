#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "tests/crash/checks.h"

namespace quoll::crash {

enum class Harm {
  kKillAll,  ///< every process of the share, as when the session or the machine goes
  kKillOne,  ///< the process that makes the call
  kFault,    ///< the call fails
};

/// What a share finds.
struct World {
  /// The file system has unnamed files and copies inside itself.
  bool is_modern = true;
  /// No share was made here before.
  bool is_new = false;
};

/// One share that is harmed at the entry of one system call: the `call`-th, from 1, that its thread
/// makes.
struct Trial {
  Harm harm = Harm::kKillAll;
  World world;
  Lane lane = kEveryLane;
  long call = 0;
  /// Which of the call's faults, from 0.
  std::size_t fault = 0;
  /// Count only the calls that change a file.
  bool only_changes = false;
};

struct Result {
  /// False when the share ended before that call, or the call has no such fault.
  bool was_harmed = false;
  /// The calls of the thread up to the harm, or all of them.
  long calls = 0;
  /// The faults that the call can have.
  std::size_t faults = 0;
  /// "openat EIO", "linkat".
  std::string what;
  /// The loader met the fault and said so: the program never began.
  bool ended_by_loader = false;
  /// A library ended a child with a signal, and the program told what that meant.
  bool ended_by_library = false;
  /// The share could not know that the application had taken the draft.
  bool is_unsure = false;
  Findings findings;
};

/// How many calls each thread makes, or all of them when only those are counted that change a file:
/// they are few, and it is not always the same thread that takes an item.
using Calls = std::map<Lane, long>;

/// The calls of a share that is not harmed; throws when it fails.
[[nodiscard]] Calls count_calls(Scene& scene, const World& world, bool only_changes = false);

/// Shares, harms, looks, shares again and looks again. `seconds` is the time for each of the two; 0
/// is all the time that they want.
[[nodiscard]] Result run_trial(Scene& scene, const Trial& trial, unsigned seconds);

}  // namespace quoll::crash
