#pragma once

#include <optional>
#include <string>
#include <vector>

/// Lists of byte strings over a stream socket between two processes of one program.
namespace quoll::gio {

/// Sends one list; false when the other side is gone.
[[nodiscard]] bool send_fields(int socket, const std::vector<std::string>& fields);

/// Waits for one list; none when the other side is gone or sends what is no list, or more than fits
/// into a bus message.
[[nodiscard]] std::optional<std::vector<std::string>> receive_fields(int socket);

}  // namespace quoll::gio
