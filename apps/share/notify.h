#pragma once

#include <functional>

namespace quoll::share {

/// Runs `share` in a process of its own and answers its exit code. What that process writes on
/// standard error is passed on. When the code is not 0, it is also shown on the desktop, because
/// the menu that started the program is closed by then, and nobody sees its standard error.
///
/// The share ends with this program. To be called while there is one thread.
[[nodiscard]] int share_and_notify(const std::function<int()>& share);

}  // namespace quoll::share
