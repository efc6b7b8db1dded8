// Stands on the bus as the mail application and asks another program at each step of a call.
//   soak_receiver NAME NEXT SOCKET
// A call of NAME is told to the socket as "call N URL". When "go N" comes back the call is handed
// on to NEXT, which is the real receiver, and "taken N" or "refused N REASON" is told. "answer N"
// answers the caller, "fail N"
// tells it that the receiver did not.
#include <gio/gio.h>
#include <glib-unix.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <string_view>

#include "quoll/linux/gio/handles.h"
#include "quoll/linux/gio/left_out.h"
#include "quoll/linux/gio/opener.h"
#include "quoll/linux/posix/unique_fd.h"

namespace {

constexpr const char* kInterface = R"(<node><interface name="org.freedesktop.Application">
  <method name="Open"><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/></method>
</interface></node>)";

class Receiver {
 public:
  Receiver(GDBusConnection* bus, std::string next, int socket)
      : bus_(bus), next_(std::move(next)), socket_(socket) {}

  void take(GVariant* parameters, GDBusMethodInvocation* call) {
    const std::string number = std::to_string(++calls_);
    const quoll::gio::VariantHandle urls(g_variant_get_child_value(parameters, 0));
    std::string line = "call " + number;
    for (gsize at = 0; at < g_variant_n_children(urls.get()); ++at) {
      const quoll::gio::VariantHandle url(g_variant_get_child_value(urls.get(), at));
      line += std::string(" ") + g_variant_get_string(url.get(), nullptr);
    }
    waiting_.emplace(number, call);
    tell(line);
  }

  /// What the other program says; false when it is gone.
  bool listen() {
    char bytes[4096];
    const ssize_t count = read(socket_, bytes, sizeof bytes);
    if (count <= 0) {
      return false;
    }
    said_.append(bytes, static_cast<std::size_t>(count));
    for (std::size_t end = said_.find('\n'); end != std::string::npos; end = said_.find('\n')) {
      const std::string line = said_.substr(0, end);
      said_.erase(0, end + 1);
      obey(line.substr(0, line.find(' ')), line.substr(line.find(' ') + 1));
    }
    return true;
  }

  void tell(std::string line) const {
    line += '\n';
    for (std::size_t at = 0; at < line.size();) {
      const ssize_t sent = send(socket_, line.data() + at, line.size() - at, MSG_NOSIGNAL);
      if (sent <= 0) {
        _exit(1);
      }
      at += static_cast<std::size_t>(sent);
    }
  }

 private:
  struct HandedOn {
    Receiver* receiver;
    std::string number;
  };

  void obey(const std::string& what, const std::string& number) {
    const auto found = waiting_.find(number);
    if (found == waiting_.end()) {
      return;
    }
    if (what == "go") {
      GVariant* parameters = g_dbus_method_invocation_get_parameters(found->second);
      g_dbus_connection_call(bus_, next_.c_str(), quoll::gio::object_path(next_).c_str(),
                             "org.freedesktop.Application", "Open", parameters, nullptr,
                             G_DBUS_CALL_FLAGS_NONE, -1, nullptr, handed_on,
                             new HandedOn{this, number});
      return;
    }
    if (what == "fail") {
      g_dbus_method_invocation_return_error_literal(found->second, G_DBUS_ERROR,
                                                    G_DBUS_ERROR_FAILED, "it was not taken");
    } else {
      g_dbus_method_invocation_return_value(found->second, nullptr);
    }
    waiting_.erase(found);
  }

  static void handed_on(GObject* bus, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<HandedOn> call(static_cast<HandedOn*>(data));
    quoll::gio::ErrorSlot error;
    const quoll::gio::VariantHandle reply(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, error.out()));
    const quoll::gio::TextHandle name(error ? g_dbus_error_get_remote_error(error.get()) : nullptr);
    const bool is_taken =
        reply || (name && std::string_view(name.get()) == quoll::gio::kTakenError);
    std::string reason = error.message();
    std::ranges::replace(reason, '\n', '|');  // what is told is one line
    call->receiver->tell(is_taken ? "taken " + call->number
                                  : "refused " + call->number + " " + reason);
  }

  GDBusConnection* bus_;
  std::string next_;
  int socket_;
  int calls_ = 0;
  std::string said_;
  std::map<std::string, GDBusMethodInvocation*> waiting_;
};

void called(GDBusConnection*, const char*, const char*, const char*, const char*,
            GVariant* parameters, GDBusMethodInvocation* call, gpointer receiver) {
  static_cast<Receiver*>(receiver)->take(parameters, call);
}

int connected(const char* path) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    std::perror("soak_receiver");
    std::exit(1);
  }
  return fd;
}

int receive(const char* name, const char* next, const quoll::posix::UniqueFd& socket) {
  static const GDBusInterfaceVTable methods{called, nullptr, nullptr, {}};
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  Receiver receiver(bus, next, socket.get());
  const quoll::gio::NodeInfoHandle node(g_dbus_node_info_new_for_xml(kInterface, nullptr));
  g_dbus_connection_register_object(bus, quoll::gio::object_path(name).c_str(), node->interfaces[0],
                                    &methods, &receiver, nullptr, nullptr);
  g_bus_own_name_on_connection(bus, name, G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr,
                               nullptr);
  receiver.tell("hello " + std::to_string(getpid()));
  g_unix_fd_add(
      socket.get(), static_cast<GIOCondition>(G_IO_IN | G_IO_HUP),
      [](int, GIOCondition, gpointer that) -> gboolean {
        if (!static_cast<Receiver*>(that)->listen()) {
          _exit(0);
        }
        return G_SOURCE_CONTINUE;
      },
      &receiver);
  for (;;) {
    g_main_context_iteration(nullptr, TRUE);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    return 2;
  }
  const quoll::posix::UniqueFd socket(connected(argv[3]));
  return receive(argv[1], argv[2], socket);
}
