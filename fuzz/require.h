#pragma once

#include <cstdlib>

namespace quoll::fuzz {

/// Stops the run: the property does not hold for this input.
inline void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace quoll::fuzz
