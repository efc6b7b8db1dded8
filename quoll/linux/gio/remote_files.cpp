#include "quoll/linux/gio/remote_files.h"

#include <gio/gio.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

#include "quoll/linux/gio/fields.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/subprocess.h"

namespace quoll::gio {

namespace {

/// Where GIO has it; null when it is mounted nowhere.
TextHandle path_of_gio(const char* url) {
  const ObjectHandle<GFile> file(g_file_new_for_uri(url));
  return TextHandle(g_file_get_path(file.get()));
}

/// Where KDE mounts it now; empty when it cannot.
std::string path_of_kio(const char* url) {
  constexpr int kTimeOut = 15'000;
  const ObjectHandle<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (!bus) {
    return {};
  }
  const VariantHandle answer(g_dbus_connection_call_sync(
      bus.get(), "org.kde.KIOFuse", "/org/kde/KIOFuse", "org.kde.KIOFuse.VFS", "mountUrl",
      g_variant_new("(s)", url), G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, kTimeOut, nullptr,
      nullptr));
  const char* path = "";
  if (answer) {
    g_variant_get(answer.get(), "(&s)", &path);
  }
  return path;
}

void serve(int socket) {
  while (const auto fields = receive_fields(socket)) {
    const std::string url = fields->empty() ? std::string() : fields->front();
    const TextHandle path = path_of_gio(url.c_str());
    if (!send_fields(socket, {path ? path.get() : path_of_kio(url.c_str())})) {
      break;
    }
  }
}

}  // namespace

std::optional<std::string> RemoteFiles::local_path(const std::string& url) {
  if (!std::exchange(has_started_, true)) {
    const pid_t program = getpid();
    process_ = fork_process([program](int socket) {
      // A module may wait for a server, and sees nothing of a socket that was closed.
      if (prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == program) {
        serve(socket);
      }
    });
  }
  if (!process_.socket || !send_fields(process_.socket.get(), {url}) || !has_answer()) {
    end();
    return std::nullopt;
  }
  auto answer = receive_fields(process_.socket.get());
  if (!answer) {
    end();
  }
  const bool is_path = answer && answer->size() == 1 && answer->front().starts_with('/');
  return is_path ? std::optional(std::move(answer->front())) : std::nullopt;
}

bool RemoteFiles::has_answer() const {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds kLook{100};
  const auto deadline = Clock::now() + time_out_;
  while (!posix::wait_until_readable(process_.socket.get(),
                                     std::min(Clock::now() + kLook, deadline))) {
    if (errno != ETIMEDOUT || Clock::now() >= deadline || !go_on_()) {
      return false;
    }
  }
  return true;
}

void RemoteFiles::end() {
  process_.socket.reset();
  if (const pid_t process = std::exchange(process_.id, -1); process > 0) {
    kill(process, SIGKILL);
    posix::reap(process);
  }
}

}  // namespace quoll::gio
