#include "quoll/linux/gio/fields.h"

#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::gio {
namespace {

// Sent in the byte order of the machine: both sides are the same program.
using Length = std::uint32_t;
// A little more than a bus message may hold, in bytes.
constexpr Length kLargestList = 65U << 20U;
// More of the shortest URLs do not fit into a bus message.
constexpr std::size_t kMostFields = (std::size_t{64} << 20U) / 16;

/// Not `posix::write_all`: when the other side has gone, no signal may end the program.
bool send_all(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = posix::uninterrupted(
        [&] { return send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL); });
    if (sent < 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

void append_length(std::string& out, std::size_t length) {
  std::array<char, sizeof(Length)> bytes{};
  const auto narrow = static_cast<Length>(length);
  std::memcpy(bytes.data(), &narrow, bytes.size());
  out.append(bytes.data(), bytes.size());
}

std::optional<Length> take_length(std::string_view& bytes) {
  Length length = 0;
  if (bytes.size() < sizeof(length)) {
    return std::nullopt;
  }
  std::memcpy(&length, bytes.data(), sizeof(length));
  bytes.remove_prefix(sizeof(length));
  return length;
}

}  // namespace

bool send_fields(int socket, const std::vector<std::string>& fields) {
  std::string list;
  for (const auto& field : fields) {
    append_length(list, field.size());
    list += field;
    if (list.size() > kLargestList) {
      return false;
    }
  }
  std::string head;
  append_length(head, list.size());
  return send_all(socket, head) && send_all(socket, list);
}

std::optional<std::vector<std::string>> receive_fields(int socket) {
  std::string head;
  bool ended = false;
  std::optional<Length> size;
  if (posix::read_until(socket, head, sizeof(Length), ended)) {
    std::string_view left = head;
    size = take_length(left);
  }
  std::string list;
  if (!size || *size > kLargestList || !posix::read_until(socket, list, *size, ended) ||
      list.size() != *size) {
    return std::nullopt;
  }
  std::vector<std::string> fields;
  std::string_view left = list;
  while (!left.empty()) {
    const auto length = take_length(left);
    if (!length || *length > left.size() || fields.size() == kMostFields) {
      return std::nullopt;
    }
    fields.emplace_back(left.substr(0, *length));
    left.remove_prefix(*length);
  }
  return fields;
}

}  // namespace quoll::gio
