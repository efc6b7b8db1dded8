#pragma once

#include <chrono>
#include <string>

namespace quoll::gio {

/// What the desktop knows about an application.
struct ApplicationLookup {
  std::string bus_trouble;       ///< why there is no session bus; empty when there is one
  bool is_running = false;       ///< its name is taken on the bus
  bool is_startable = false;     ///< the bus can start it
  bool has_entry = false;        ///< it has a desktop entry that can be used
  bool is_entry_broken = false;  ///< it has one that cannot be used
};

/// Looks an application up without starting it. Waits for the bus, but at most for `time_out`. Runs
/// the default main context of this thread.
[[nodiscard]] ApplicationLookup look_up_application(const std::string& application,
                                                    std::chrono::milliseconds time_out);

/// The identifier of the application that opens URLs of a scheme, followed by ".desktop"; empty
/// when there is none.
[[nodiscard]] std::string handler_of_scheme(const std::string& scheme);

/// Makes an application the one that opens URLs of a scheme. Its entry must say that it can. False
/// when the setting cannot be written.
[[nodiscard]] bool set_handler_of_scheme(const std::string& application, const std::string& scheme);

/// The path of a file in the data folders, of which the user's own is the first; empty when no
/// folder has it.
[[nodiscard]] std::string find_data_file(const std::string& name);

}  // namespace quoll::gio
