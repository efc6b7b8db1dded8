#pragma once

#include <string>
#include <vector>

#include "tests/crash/scene.h"
#include "tests/crash/stepper.h"

namespace quoll::crash {

/// What a check is about.
enum class About {
  kHalfFile,   ///< a file under a staged name is not whole
  kLeftOver,   ///< something stays that no later share removes
  kLock,       ///< a lock cannot be taken any more
  kTouched,    ///< something that is no business of a share is not what it was
  kNextShare,  ///< the next share does not work
  kDeath,      ///< a process was ended by a signal
  kHang,       ///< a process did not end
  kUntruth,    ///< the exit status or standard error does not say what came to be
};

inline constexpr std::size_t kAbouts = 8;

struct Finding {
  About about;
  std::string text;
};
using Findings = std::vector<Finding>;

[[nodiscard]] std::string words_of(About about);
[[nodiscard]] std::string words_of(const Death& death);

/// What is true at every instant and after every end: staged files are whole, no lock is held,
/// nobody else's file is touched.
void check_disk(const Scene& scene, const Snapshot& before, Findings& findings);

/// That a share which nothing disturbed delivered all of it, and left nothing behind of itself or
/// of those before it.
void check_next(const Scene& scene, const SteppedEnd& end, Findings& findings);

/// That a share which met a failure told what became of it. `is_mute`: it was the writing to
/// standard error that failed. Sets `is_unsure` when it told that nothing was opened and something
/// was: the answer may be lost on its way.
void check_told(const Scene& scene, const SteppedEnd& end, bool is_mute, bool& is_unsure,
                Findings& findings);

}  // namespace quoll::crash
