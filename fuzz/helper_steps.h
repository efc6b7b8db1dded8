#pragma once

namespace quoll::fuzz {

/// What the double of the image helper does with a pair of bytes: this, with the second as its
/// number.
enum class HelperStep {
  kWrite,         ///< so many bytes to the result: 0, 1, 2 and so on
  kWriteFarAway,  ///< one byte beyond the longest result, so many bytes
  kResize,        ///< the result, to so many times 4 bytes
  kSeal,          ///< as the helper does when even, else with that choice of seals
  kSay,           ///< so many bytes on standard error
  kChangeTheImage,
  kEnd,  ///< with that status
  kDie,  ///< by a signal
};

constexpr HelperStep helper_step(unsigned char byte) {
  return static_cast<HelperStep>(byte % 8);
}

}  // namespace quoll::fuzz
