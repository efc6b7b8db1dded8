#pragma once

#include <gio/gio.h>

#include <chrono>
#include <string>

namespace quoll::gio {

/// Shows a notification on the desktop: a line, and plain text below it. False when there is no
/// session bus or nobody shows notifications. Waits for the answer, but not longer than `time_out`.
/// Runs the thread's default main context.
bool show_notification(const std::string& summary, const std::string& body,
                       std::chrono::milliseconds time_out);

/// The same for a program that goes on: it is sent, and nobody waits for what comes of it.
void send_notification(GDBusConnection* bus, const std::string& summary, const std::string& body);

}  // namespace quoll::gio
