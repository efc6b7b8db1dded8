#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace quoll::gio {

/// What the desktop knows about an application.
struct ApplicationLookup {
  std::string bus_trouble;      ///< why there is no session bus; empty when there is one
  bool is_running = false;      ///< its name is taken on the bus
  int process = 0;              ///< by this process; 0 when the bus does not tell
  bool is_startable = false;    ///< the bus can start it
  std::string service_program;  ///< what its service file starts; empty when none is found
  std::string service_file;     ///< the path of that file
  bool has_entry = false;       ///< it has a desktop entry that can be used
  std::string broken_entry;     ///< the path of one that cannot be used; empty when there is none
  std::string entry_program;    ///< what its desktop entry starts
};

/// Looks an application up without starting it. Waits for the bus, but at most for `time_out`. Runs
/// the default main context of this thread.
[[nodiscard]] ApplicationLookup look_up_application(const std::string& application,
                                                    std::chrono::milliseconds time_out);

/// What came of `Activate`.
struct ActivationAnswer {
  bool is_there = false;               ///< the bus knows the application
  std::optional<std::string> failure;  ///< why it did not answer well, in plain words
  std::string advice;                  ///< what can be done about it; empty when not known
};

/// The file by which the bus starts an application, and the program that it names.
struct ServiceFile {
  std::string path;     ///< empty when there is none
  std::string program;  ///< empty when it names none
};
[[nodiscard]] ServiceFile service_file(const std::string& application);

/// Why the program of a file that starts it cannot be used, and what to do: remove the file when it
/// is the user's own.
[[nodiscard]] std::string missing_program(const std::string& program, const std::string& file);
[[nodiscard]] std::string advice_on_missing_program(const std::string& file);

/// Has an application answer `Activate` over the bus, by the way and with the words that opening a
/// URL has. It is started if need be and gets nothing to open.
[[nodiscard]] ActivationAnswer activate_application(const std::string& application,
                                                    std::chrono::milliseconds time_out);

/// True when a program of this path, or of this name in PATH, can be started.
[[nodiscard]] bool is_program(const std::string& program);

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
