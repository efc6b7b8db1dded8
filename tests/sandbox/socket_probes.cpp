#include <linux/netlink.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tests/sandbox/probe_table.h"

namespace quoll::test {
namespace {

bool makes(int family, int type) {
  return socket(family, type | SOCK_CLOEXEC, 0) >= 0;
}

sockaddr_un address(const std::string& path) {
  sockaddr_un where{};
  where.sun_family = AF_UNIX;
  path.copy(where.sun_path, sizeof where.sun_path - 1);
  return where;
}

bool connects(int socket, const char* variable) {
  const sockaddr_un where = address(setting(variable));
  return connect(socket, reinterpret_cast<const sockaddr*>(&where), sizeof where) == 0;
}

/// Standard input is a socket for datagrams that is not connected.
bool sends_to_an_address() {
  const sockaddr_un where = address(setting("QUOLL_PROBE_INBOX"));
  return sendto(STDIN_FILENO, "x", 1, 0, reinterpret_cast<const sockaddr*>(&where), sizeof where) ==
         1;
}

/// Sends a message with an address, or a descriptor with it.
bool sends_a_descriptor() {
  sockaddr_un where = address(setting("QUOLL_PROBE_INBOX"));
  char byte = 'x';
  iovec data{&byte, 1};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
  msghdr message{};
  message.msg_name = &where;
  message.msg_namelen = sizeof where;
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  cmsghdr* const head = CMSG_FIRSTHDR(&message);
  head->cmsg_level = SOL_SOCKET;
  head->cmsg_type = SCM_RIGHTS;
  head->cmsg_len = CMSG_LEN(sizeof(int));
  const int descriptor = STDERR_FILENO;
  std::memcpy(CMSG_DATA(head), &descriptor, sizeof descriptor);
  return sendmsg(STDIN_FILENO, &message, 0) == 1;
}

std::string field(const std::string& bytes) {
  const auto length = static_cast<std::uint32_t>(bytes.size());
  return std::string(reinterpret_cast<const char*>(&length), sizeof length) + bytes;
}

/// The socket that the program has connected to the launcher; it has no other.
int socket_to_the_launcher() {
  for (int number = STDERR_FILENO + 1; number < 100; ++number) {
    struct stat status {};
    if (fstat(number, &status) == 0 && S_ISSOCK(status.st_mode)) {
      return number;
    }
  }
  return -1;
}

constexpr const char* kDraft = "quoll://compose?";
constexpr const char* kMailApplication = "it.vorlent.quoll2";

/// Asks the launcher in its own words; true when the application has taken the URLs.
bool launcher_opens(const std::vector<std::string>& urls,
                    const std::string& application = kMailApplication) {
  const int launcher = socket_to_the_launcher();
  std::string fields = field(application) + field("foreground");
  for (const std::string& url : urls) {
    fields += field(url);
  }
  const std::string request = field(fields);
  // A length, then as many bytes: a field of a word, and one of the reason.
  std::uint32_t length = 0;
  std::string answer(512, '\0');
  errno = EPIPE;
  if (send(launcher, request.data(), request.size(), MSG_NOSIGNAL) < 0 ||
      recv(launcher, &length, sizeof length, MSG_WAITALL) != sizeof length ||
      length > answer.size() ||
      recv(launcher, answer.data(), length, MSG_WAITALL) != static_cast<ssize_t>(length)) {
    return false;
  }
  errno = EPERM;
  return answer.substr(sizeof length, 5) == "taken";
}

constexpr Probe kProbes[] = {
    {"have a draft made", [] { return launcher_opens({kDraft}); }},
    {"have two drafts made", [] { return launcher_opens({kDraft}) && launcher_opens({kDraft}); }},
    {"have two drafts made at once",
     [] {
       return launcher_opens({kDraft, kDraft});
     }},
    {"have a message deleted", [] { return launcher_opens({"quoll://delete?mail=a"}); }},
    {"have another application opened",
     [] { return launcher_opens({kDraft}, "it.vorlent.quoll2.Other"); }},
    {"make a local socket", [] { return makes(AF_UNIX, SOCK_STREAM); }},
    {"make a local socket for datagrams", [] { return makes(AF_UNIX, SOCK_DGRAM); }},
    {"make a pair of sockets",
     [] {
       int ends[2];
       return socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0;
     }},
    {"make a TCP socket", [] { return makes(AF_INET, SOCK_STREAM); }},
    {"make a UDP socket", [] { return makes(AF_INET, SOCK_DGRAM); }},
    {"make a TCP socket of IPv6", [] { return makes(AF_INET6, SOCK_STREAM); }},
    {"make a raw socket", [] { return makes(AF_PACKET, SOCK_RAW); }},
    {"make a kernel socket", [] { return makes(AF_NETLINK, SOCK_RAW); }},
    {"make a socket to the host machine", [] { return makes(AF_VSOCK, SOCK_STREAM); }},
    {"reach the session bus",
     [] {
       const int bus = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
       return bus >= 0 && connects(bus, "QUOLL_PROBE_SOCKET");
     }},
    {"connect an open socket", [] { return connects(STDIN_FILENO, "QUOLL_PROBE_INBOX"); }},
    {"send to an address", sends_to_an_address},
    {"send a descriptor", sends_a_descriptor},
};

}  // namespace

std::span<const Probe> socket_probes() {
  return kProbes;
}

}  // namespace quoll::test
