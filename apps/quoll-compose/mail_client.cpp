#include "apps/quoll-compose/mail_client.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "linux/gio/desktop_entry.h"

namespace quoll::receiver {
namespace {

bool has_desktop() {
  const auto is_set = [](const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
  };
  return is_set("DISPLAY") || is_set("WAYLAND_DISPLAY");
}

// These open a message file with `X-Unsent: 1` in a compose window; others show it, or nothing.
bool opens_drafts(GAppInfo* client) {
  constexpr std::array<const char*, 3> kKin{"thunderbird", "betterbird", "icedove"};
  const auto names_one = [&](const char* text) {
    const gio::TextHandle small(g_ascii_strdown(text != nullptr ? text : "", -1));
    const std::string name = small.get();
    return std::ranges::any_of(
        kKin, [&](const char* kin) { return name.find(kin) != std::string::npos; });
  };
  return names_one(g_app_info_get_id(client)) || names_one(g_app_info_get_executable(client));
}

}  // namespace

std::string hand_to_mail_client(const std::string& draft, const gio::ActivationTokens& tokens) {
  if (!has_desktop()) {
    return {};
  }
  const gio::ObjectHandle<GAppInfo> client(g_app_info_get_default_for_uri_scheme("mailto"));
  if (!client) {
    return "is kept: no mail client is chosen for mail links";
  }
  const std::string name = g_app_info_get_name(client.get());
  if (!opens_drafts(client.get()) || !G_IS_DESKTOP_APP_INFO(client.get())) {
    return "is kept: " + name + " cannot be given a draft, so open or import the file there";
  }
  const gio::ObjectHandle<GFile> file(g_file_new_for_path(draft.c_str()));
  const gio::TextHandle uri(g_file_get_uri(file.get()));
  const gio::Failure failure = gio::start_program(
      G_DESKTOP_APP_INFO(client.get()), {.uris = {uri.get()}, .arguments = {}, .tokens = tokens});
  return failure ? "is kept: " + *failure : "was given to " + name;
}

}  // namespace quoll::receiver
