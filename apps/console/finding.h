#pragma once

#include <string>
#include <vector>

namespace quoll::console {

/// One thing that a share needs on its way, and its present state.
struct Finding {
  enum class State {
    kGood,
    kWorthKnowing,  ///< a share arrives nevertheless
    kBroken,        ///< a share does not arrive, or something of it is left out
  };

  std::string name;
  State state = State::kGood;
  std::string found;
  std::string advice;                ///< the one thing to do; empty when there is nothing to do
  std::vector<std::string> lines{};  ///< lines of other programs, such as log lines
};

}  // namespace quoll::console
