#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share {

/// The conversation with the program whose share menu was used, over the socket that it names: it
/// tells what is shared, and is told how far the share is and how it ended. The menu takes
/// silence for success, so connect before anything that can fail. When the menu goes away the share
/// goes on unheard.
class MenuSocket {
 public:
  /// Connects; the socket is not inherited by programs that are started.
  explicit MenuSocket(const std::string& path);

  [[nodiscard]] bool is_connected() const { return static_cast<bool>(socket_); }

  /// Waits for what is shared: a length in decimal digits, a line break, and as many bytes. None
  /// when the other side ends before, or tells a length that no share has.
  [[nodiscard]] std::optional<std::string> receive();

  /// From 0 to 100; says nothing when that was the last thing said.
  void tell_progress(int percent);
  /// Shown to the user.
  void tell_error(std::string_view text);
  /// There is nothing for the host to open.
  void tell_end();

 private:
  void say(std::string line);

  posix::UniqueFd socket_;
  int percent_ = -1;
};

/// More than any share brings along: pictures come as texts in it.
inline constexpr std::size_t kLongestRequest = std::size_t{256} << 20U;

}  // namespace quoll::share
