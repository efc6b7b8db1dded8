#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "quoll/linux/gio/forked_process.h"

namespace quoll::gio {

/// How long the desktop may take to say where a file is.
inline constexpr std::chrono::milliseconds kMountTimeOut{20'000};

/// Asks the desktop where it has mounted files of other computers and of devices: GIO's, which
/// belong to GNOME and its kin, and KIO's, of KDE. Its process is started with the first question,
/// loads the modules of the desktop, and has ended when this object is gone. To be used while there
/// is one thread, and not by a process that is confined or uses GIO.
class RemoteFiles {
 public:
  /// `go_on` is asked ten times a second while the desktop is waited for; false gives it up.
  explicit RemoteFiles(
      std::chrono::milliseconds time_out = kMountTimeOut,
      std::function<bool()> go_on = [] { return true; })
      : time_out_(time_out), go_on_(std::move(go_on)) {}
  RemoteFiles(const RemoteFiles&) = delete;
  RemoteFiles& operator=(const RemoteFiles&) = delete;
  ~RemoteFiles() { end(); }

  /// The absolute path at which the file of this URL can be read, as the desktop says; none when it
  /// knows none, or does not answer in time. Then no more is asked.
  [[nodiscard]] std::optional<std::string> local_path(const std::string& url);

 private:
  [[nodiscard]] bool has_answer() const;
  void end();

  std::chrono::milliseconds time_out_;
  std::function<bool()> go_on_;
  ForkedProcess process_;
  bool has_started_ = false;
};

}  // namespace quoll::gio
