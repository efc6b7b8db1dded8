#pragma once

namespace quoll::fuzz {

/// A step of the helper's double, encoded in two bytes: the first is the kind of step, the second
/// its number N.
enum class HelperStep {
  kWrite,         ///< write N bytes to the result: 0, 1, 2 and so on
  kWriteFarAway,  ///< write N bytes one byte beyond the longest result
  kResize,        ///< resize the result to N times 4 bytes
  kSeal,          ///< seal the result: as the helper does if N is even, else with the seals N
  kSay,           ///< write N bytes to standard error
  kChangeTheImage,
  kEnd,  ///< end with the status N
  kDie,  ///< end by a signal
};

constexpr HelperStep helper_step(unsigned char byte) {
  return static_cast<HelperStep>(byte % 8);
}

}  // namespace quoll::fuzz
