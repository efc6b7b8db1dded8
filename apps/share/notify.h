#pragma once

#include <functional>

namespace quoll::share {

/// Runs a share in a process of its own and answers the number that it ends with. What it tells on
/// standard error goes there, and when it ended with another number than 0 it is shown on the
/// desktop too: the menu that started it is closed by then, and nobody sees its standard error.
/// Whoever ends this program ends the share. Called while there is one thread.
[[nodiscard]] int share_and_notify(const std::function<int()>& share);

}  // namespace quoll::share
