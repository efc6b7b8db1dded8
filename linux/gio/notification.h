#pragma once

#include <chrono>
#include <string>

namespace quoll::gio {

/// Shows a notification on the desktop: a line, and plain text below it. False when there is no
/// session bus or nobody shows notifications. Waits for the answer, but not longer than `time_out`.
/// Runs the thread's default main context.
bool show_notification(const std::string& summary, const std::string& body,
                       std::chrono::milliseconds time_out);

}  // namespace quoll::gio
