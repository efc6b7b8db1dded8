#pragma once

#include <string>
#include <vector>

namespace quoll::console {

/// One thing that a share needs on its way, and its present state.
struct Finding {
  enum class State {
    kGood,
    kWorthKnowing,  ///< a share arrives nevertheless
    kBroken,        ///< a share does not arrive
  };

  std::string name;
  State state = State::kGood;
  std::string found;
  std::string advice;                ///< the one thing to do; empty when there is nothing to do
  std::vector<std::string> lines{};  ///< lines of other programs, such as log lines
};

/// Checks everything that a share needs, in the order of its way from the program to the compose
/// window, without sharing anything. With `repair` it first repairs what it can: it makes the
/// container and sets its mode, removes from it what killed shares left, and chooses the
/// application that opens command URLs when none does.
[[nodiscard]] std::vector<Finding> diagnose(bool repair);

/// True when a share would arrive.
[[nodiscard]] bool share_would_arrive(const std::vector<Finding>& findings);

}  // namespace quoll::console
