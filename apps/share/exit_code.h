#pragma once

namespace quoll::share {

/// The number that a program which shares ends with.
enum class ExitCode : int {
  kOpened = 0,
  kNotOpened = 1,
  kUsage = 2,
  kSomethingLeftOut = 3,
};

}  // namespace quoll::share
