#include "apps/share/request/menu_socket.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <charconv>
#include <cstring>
#include <nlohmann/json.hpp>

namespace quoll::share {

namespace {

posix::UniqueFd connected(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    return posix::UniqueFd();
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  posix::UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket ||
      connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return posix::UniqueFd();
  }
  return socket;
}

/// The number that a line holds and nothing else; none when it is too large for a share.
std::optional<std::size_t> length_of(std::string_view line) {
  std::size_t length = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), length);
  if (error != std::errc() || end != line.data() + line.size() || length > kLongestRequest) {
    return std::nullopt;
  }
  return length;
}

}  // namespace

MenuSocket::MenuSocket(const std::string& path) : socket_(connected(path)) {}

std::optional<std::string> MenuSocket::receive() {
  constexpr std::size_t kLongestLine = 20;  // the digits of the largest number
  std::string bytes;
  std::size_t line_end = std::string::npos;
  bool ended = false;
  while ((line_end = bytes.find('\n')) == std::string::npos) {
    if (ended || bytes.size() > kLongestLine ||
        !posix::read_until(socket_.get(), bytes, bytes.size() + 1, ended)) {
      return std::nullopt;
    }
  }
  const auto length = length_of(std::string_view(bytes).substr(0, line_end));
  bytes.erase(0, line_end + 1);
  if (!length || !posix::read_until(socket_.get(), bytes, *length, ended) ||
      bytes.size() < *length) {
    return std::nullopt;
  }
  bytes.resize(*length);
  return bytes;
}

void MenuSocket::tell_progress(int percent) {
  if (percent != percent_) {
    percent_ = percent;
    say(nlohmann::json{{"percent", percent}}.dump());
  }
}

void MenuSocket::tell_error(std::string_view text) {
  constexpr int kUserDefined = 100;  // the first number that is not one of the desktop's own
  const nlohmann::json error{{"error", kUserDefined}, {"errorText", text}};
  say(error.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

void MenuSocket::tell_end() {
  say(R"({"output":{"url":""}})");
}

void MenuSocket::say(std::string line) const {
  line += '\n';
  static_cast<void>(posix::write_all(socket_.get(), line));
}

}  // namespace quoll::share
