#pragma once

#include <functional>
#include <string>

namespace quoll::share {

/// Gets whole lines of a report.
using Tell = std::function<void(const std::string& told)>;

/// Runs `share` in a process of its own and answers its exit code. What it tells goes to standard
/// error. When the code is not 0, that is also shown on the desktop, because the menu that started
/// the program is closed by then, and nobody sees its standard error. That it waits for another
/// share is shown at once, and a preparation that takes longer than 2 s with a button that cancels
/// it; `share` writes its progress to `pipe` (`progress_pipe.h`). Nothing is shown of a share that
/// was cancelled.
///
/// A signal that asks this program to end goes to the share too; the program ends by it when the
/// share has ended. However it ends, the share ends with it. To be called while there is one
/// thread.
[[nodiscard]] int share_and_notify(const std::function<int(const Tell& tell, int pipe)>& share);

}  // namespace quoll::share
