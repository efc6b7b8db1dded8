#include "quoll/linux/gio/mail_clients.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <tuple>
#include <utility>

#include "quoll/foundation/path.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::gio {
namespace {

constexpr const char* kMailLinks = "x-scheme-handler/mailto";

std::string text_of(const char* text) {
  return text != nullptr ? text : "";
}

struct Known {
  const char* part;  ///< in the identifier or the program's name, in lower case
  DraftWay way;
};

constexpr std::array kKnown{
    Known{"thunderbird", DraftWay::kMessageFile},
    Known{"betterbird", DraftWay::kMessageFile},
    Known{"icedove", DraftWay::kMessageFile},
    Known{"evolution", DraftWay::kEvolution},
    Known{"kmail", DraftWay::kKMail},
    Known{"claws-mail", DraftWay::kClaws},
    Known{"sylpheed", DraftWay::kSylpheed},
    Known{"balsa", DraftWay::kBalsa},
    Known{"mutt", DraftWay::kMutt},
    Known{"aerc", DraftWay::kAerc},
};

EntryHandle desktop_entry(GAppInfo* found) {
  ObjectHandle<GAppInfo> entry(found);
  return EntryHandle(G_IS_DESKTOP_APP_INFO(entry.get()) ? G_DESKTOP_APP_INFO(entry.release())
                                                        : nullptr);
}

EntryHandle default_entry() {
  return desktop_entry(g_app_info_get_default_for_uri_scheme("mailto"));
}

bool opens_mail_links(GAppInfo* entry) {
  const char* const* types = g_app_info_get_supported_types(entry);
  return types != nullptr && g_strv_contains(types, kMailLinks) != FALSE;
}

/// A person may make it the default for links that its entry does not list.
bool is_default(GAppInfo* entry) {
  const EntryHandle chosen = default_entry();
  return chosen && g_app_info_equal(G_APP_INFO(chosen.get()), entry) != FALSE;
}

DraftWay way_of(GAppInfo* entry) {
  const std::string program = text_of(g_app_info_get_executable(entry));
  const std::string names =
      foundation::ascii_lower_case(text_of(g_app_info_get_id(entry)) + "/" +
                                   std::string(foundation::last_path_component(program)));
  const auto* const known = std::ranges::find_if(
      kKnown, [&](const Known& one) { return names.find(one.part) != std::string::npos; });
  if (known != kKnown.end()) {
    return known->way;
  }
  return opens_mail_links(entry) || is_default(entry) ? DraftWay::kMailLink : DraftWay::kNone;
}

// The name of a snap. It is in a key of the entry, or in the path of the program:
// /snap/bin/NAME[.PROGRAM].
std::string snap_of(GDesktopAppInfo* entry, const std::string& exec) {
  const TextHandle said(g_desktop_app_info_get_string(entry, "X-SnapInstanceName"));
  if (said) {
    return said.get();
  }
  constexpr std::string_view kPrograms = "/snap/bin/";
  const auto at = exec.find(kPrograms);
  if (at == std::string::npos) {
    return {};
  }
  const auto start = at + kPrograms.size();
  return exec.substr(start, exec.find_first_of(" ./\"'", start) - start);
}

Sandbox sandbox_of(GDesktopAppInfo* entry) {
  const std::string exec = text_of(g_app_info_get_commandline(G_APP_INFO(entry)));
  const std::string program = text_of(g_app_info_get_executable(G_APP_INFO(entry)));
  return {.is_flatpak = g_desktop_app_info_has_key(entry, "X-Flatpak") != FALSE ||
                        foundation::last_path_component(program) == "flatpak",
          .passes_files_on = exec.find(" @@") != std::string::npos,
          .snap = snap_of(entry, exec)};
}

std::string setting_file() {
  const TextHandle path(
      g_build_filename(g_get_user_config_dir(), "quoll-compose", "mail-client", nullptr));
  return path.get();
}

/// The first line of the setting's file; empty when there is none. What else has that name, such as
/// a pipe, is not waited for, and no more is read than a name needs.
std::string setting() {
  constexpr std::size_t kMost = 4096;
  const auto file = posix::open_file(setting_file(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat status {};
  std::string text;
  bool ended = false;
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      !posix::read_until(file.get(), text, kMost, ended)) {
    return "";
  }
  return std::string(foundation::trim(std::string_view(text).substr(0, text.find('\n'))));
}

}  // namespace

bool MailClient::reads_files() const {
  return way == DraftWay::kMessageFile ? !sandbox.is_flatpak || sandbox.passes_files_on
                                       : !sandbox.is_any();
}

EntryHandle opener_of_message_files() {
  constexpr gboolean kTakesUris = TRUE;
  return desktop_entry(g_app_info_get_default_for_type("message/rfc822", kTakesUris));
}

MailClient mail_client_of(EntryHandle entry) {
  GAppInfo* const info = G_APP_INFO(entry.get());
  MailClient client{.entry = nullptr,
                    .id = text_of(g_app_info_get_id(info)),
                    .name = text_of(g_app_info_get_name(info)),
                    .way = way_of(info),
                    .is_in_terminal = g_desktop_app_info_get_boolean(
                                          entry.get(), G_KEY_FILE_DESKTOP_KEY_TERMINAL) != FALSE,
                    .sandbox = sandbox_of(entry.get())};
  client.entry = std::move(entry);
  return client;
}

// Looks at the entries themselves, because the desktop's index may not have a new one yet.
std::vector<MailClient> find_mail_clients() {
  const EntryHandle first = default_entry();
  const std::string first_id = first ? text_of(g_app_info_get_id(G_APP_INFO(first.get()))) : "";
  std::vector<MailClient> clients;
  GList* const all = g_app_info_get_all();
  for (const GList* at = all; at != nullptr; at = at->next) {
    if (G_IS_DESKTOP_APP_INFO(at->data) && opens_mail_links(G_APP_INFO(at->data))) {
      clients.push_back(mail_client_of(EntryHandle(G_DESKTOP_APP_INFO(g_object_ref(at->data)))));
    }
  }
  g_list_free_full(all, g_object_unref);
  std::ranges::sort(clients, {}, [&](const MailClient& client) {
    return std::tuple(client.id != first_id, client.name, client.id);
  });
  return clients;
}

ChosenMailClient chosen_mail_client() {
  ChosenMailClient chosen;
  const std::string id = setting();
  EntryHandle entry(id.empty() ? nullptr : g_desktop_app_info_new(id.c_str()));
  chosen.is_set = entry != nullptr;
  chosen.gone = entry ? "" : id;
  if (!entry) {
    entry = default_entry();
  }
  if (entry) {
    chosen.client = mail_client_of(std::move(entry));
  }
  return chosen;
}

FailureReason set_mail_client(const std::string& id) {
  const std::string file = setting_file();
  const auto because = [&](const std::string& reason) {
    return "the setting " + file + " cannot be written: " + reason;
  };
  if (id.empty()) {
    const bool is_gone = std::remove(file.c_str()) == 0 || errno == ENOENT;
    return is_gone ? FailureReason() : because(std::strerror(errno));
  }
  constexpr int kForTheUserAlone = 0700;
  constexpr int kFileForTheUserAlone = 0600;
  const TextHandle folder(g_path_get_dirname(file.c_str()));
  if (g_mkdir_with_parents(folder.get(), kForTheUserAlone) != 0) {
    return because(std::strerror(errno));
  }
  const std::string line = id + "\n";
  ErrorSlot error;
  const bool is_kept =
      g_file_set_contents_full(file.c_str(), line.data(), static_cast<gssize>(line.size()),
                               G_FILE_SET_CONTENTS_CONSISTENT, kFileForTheUserAlone,
                               error.out()) != FALSE;
  return is_kept ? FailureReason() : because(error.message());
}

}  // namespace quoll::gio
