#pragma once

#include <cstdio>
#include <cstdlib>

namespace quoll::fuzz {

/// Stops the run and says where, when a property does not hold for this input.
inline void require(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (!holds) {
    std::fprintf(stderr, "%s:%d: does not hold\n", file, line);
    std::abort();
  }
}

}  // namespace quoll::fuzz
