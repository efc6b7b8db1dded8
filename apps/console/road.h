#pragma once

#include <string>
#include <vector>

namespace quoll::console {

/// One thing that a share needs on its way, as it is now.
struct Step {
  enum class State {
    kGood,
    kWorthKnowing,  ///< a share arrives all the same
    kBroken,        ///< a share does not arrive
  };

  std::string name;
  State state = State::kGood;
  std::string found;
  std::string advice;                ///< the one thing to do; empty when there is none
  std::vector<std::string> lines{};  ///< what was found in other programs' own words
};

/// Walks the road of a share from the program to the compose window and says what it finds, without
/// sharing anything. With `mend` it first puts right what can be put right without taking anything
/// away that somebody needs: the container, its mode and what killed shares left in it, and who
/// opens command URLs when nobody does.
[[nodiscard]] std::vector<Step> walk_road(bool mend);

/// True when a share would arrive.
[[nodiscard]] bool arrives(const std::vector<Step>& steps);

}  // namespace quoll::console
