#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// The conversation with the program whose share menu was used, over the socket that it listens on.
/// It sends what to share, and is sent the progress and the result. A menu that is sent nothing
/// believes that all went well, so connect before anything that can fail. A menu that
/// has gone away is told nothing.
class MenuSocket {
 public:
  /// Connects; the socket is not inherited by programs that are started.
  explicit MenuSocket(const std::string& path);

  [[nodiscard]] bool is_connected() const { return static_cast<bool>(socket_); }
  [[nodiscard]] int descriptor() const { return socket_.get(); }

  /// Waits for what is shared: a length in decimal digits, a line break, and as many bytes. None
  /// when the other side ends before, or tells a length that no share has.
  [[nodiscard]] std::optional<std::string> receive();

  /// From 0 to 100. A number that was just sent is not sent again.
  void tell_progress(int percent);
  /// The menu shows the text to the user.
  void tell_error(std::string_view text);
  /// Says that all went well. The result has no URL for the menu's program to open.
  void tell_end();

 private:
  void say(std::string line) const;

  posix::UniqueFd socket_;
  int percent_ = -1;
};

/// More than any share brings along: pictures come as texts in it.
inline constexpr std::size_t kLongestRequest = std::size_t{256} << 20U;

}  // namespace quoll::share
