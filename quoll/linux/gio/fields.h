#pragma once

#include <optional>
#include <string>
#include <vector>

/// Sends lists of byte strings over a stream socket, between two processes of one program.
namespace quoll::gio {

/// Sends one list. False when the other side has closed the socket.
[[nodiscard]] bool send_fields(int socket, const std::vector<std::string>& fields);

/// Waits for one list. None when the other side has closed the socket, or sends something that is
/// not a list or is larger than a bus message.
[[nodiscard]] std::optional<std::vector<std::string>> receive_fields(int socket);

}  // namespace quoll::gio
