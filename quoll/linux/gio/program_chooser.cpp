#include "quoll/linux/gio/program_chooser.h"

#include <fcntl.h>
#include <gio/gunixfdlist.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

#include "quoll/linux/gio/session_bus.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::gio {
namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kRequest = "org.freedesktop.portal.Request";
constexpr const char* kToken = "quoll";
constexpr int kCallTimeOut = 30'000;  // in milliseconds; the portal may have to be started
constexpr std::chrono::minutes kPatience{5};

/// Where the answer of a person comes from: known beforehand, so that none is missed.
std::string request_path(GDBusConnection* bus) {
  std::string sender = g_dbus_connection_get_unique_name(bus) + 1;  // without its ":"
  std::ranges::replace(sender, '.', '_');
  return std::string(kPortalPath) + "/request/" + sender + "/" + kToken;
}

void answered(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
              const char* /*interface*/, const char* /*member*/, GVariant* parameters,
              gpointer answer) {
  if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ua{sv})")) != FALSE) {
    std::uint32_t number = 0;
    g_variant_get(parameters, "(u@a{sv})", &number, nullptr);
    *static_cast<std::optional<std::uint32_t>*>(answer) = number;
  }
}

/// True when the portal has begun to ask.
bool ask(GDBusConnection* bus, const posix::UniqueFd& file, const ActivationTokens& tokens) {
  const ObjectHandle<GUnixFDList> files(g_unix_fd_list_new());
  const int index = g_unix_fd_list_append(files.get(), file.get(), nullptr);
  GVariantBuilder options;
  g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(kToken));
  g_variant_builder_add(&options, "{sv}", "ask", g_variant_new_boolean(TRUE));
  if (!tokens.activation.empty()) {
    g_variant_builder_add(&options, "{sv}", "activation_token",
                          g_variant_new_string(tokens.activation.c_str()));
  }
  const VariantHandle reply(g_dbus_connection_call_with_unix_fd_list_sync(
      bus, kPortal, kPortalPath, "org.freedesktop.portal.OpenURI", "OpenFile",
      g_variant_new("(sha{sv})", "", index, &options), G_VARIANT_TYPE("(o)"),
      G_DBUS_CALL_FLAGS_NONE, kCallTimeOut, files.get(), nullptr, nullptr, nullptr));
  return reply != nullptr;
}

}  // namespace

Choice open_with_chosen_program(const std::string& path, const ActivationTokens& tokens) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  const posix::UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  SessionBus session;
  GDBusConnection* const bus = session.connection(deadline);
  if (!file || bus == nullptr) {
    return Choice::kNotOffered;
  }
  std::optional<std::uint32_t> answer;
  const guint subscription = g_dbus_connection_signal_subscribe(
      bus, kPortal, kRequest, "Response", request_path(bus).c_str(), nullptr,
      G_DBUS_SIGNAL_FLAGS_NONE, answered, &answer, nullptr);
  const bool is_asked = ask(bus, file, tokens);
  if (is_asked) {
    run_main_context_until(deadline, [&] { return answer.has_value(); });
  }
  g_dbus_connection_signal_unsubscribe(bus, subscription);
  constexpr std::uint32_t kDone = 0;
  constexpr std::uint32_t kCancelledByPerson = 1;
  if (!is_asked || answer.value_or(kCancelledByPerson) > kCancelledByPerson) {
    return Choice::kNotOffered;
  }
  return answer == kDone ? Choice::kOpened : Choice::kCancelled;
}

}  // namespace quoll::gio
