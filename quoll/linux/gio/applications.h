#pragma once

#include <chrono>
#include <string>

namespace quoll::gio {

/// What the desktop knows of an application.
struct ApplicationLookup {
  std::string bus_trouble;       ///< why there is no session bus; empty when there is one
  bool is_running = false;       ///< it has its name on the bus
  bool is_startable = false;     ///< the bus can start it
  bool has_entry = false;        ///< its desktop entry can be used
  bool is_entry_broken = false;  ///< there is one that cannot
};

/// Looks the application up without starting it. Waits for the bus, but not longer than
/// `time_out`. Runs the thread's default main context.
[[nodiscard]] ApplicationLookup look_up_application(const std::string& application,
                                                    std::chrono::milliseconds time_out);

/// The identifier of the application that opens URLs of a scheme, with ".desktop" behind it; empty
/// when none does.
[[nodiscard]] std::string handler_of_scheme(const std::string& scheme);

/// Makes an application that says it can do so the one that opens URLs of a scheme; false when that
/// cannot be kept.
[[nodiscard]] bool set_handler_of_scheme(const std::string& application, const std::string& scheme);

/// The path of a file below the data folders, the user's own first; empty when none has it.
[[nodiscard]] std::string find_data_file(const std::string& name);

}  // namespace quoll::gio
