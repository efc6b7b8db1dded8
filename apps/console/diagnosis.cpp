#include "apps/console/diagnosis.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string_view>

#include "apps/console/program_desktop.h"
#include "apps/share/identifier.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/gio/applications.h"
#include "quoll/linux/gio/mail_clients.h"
#include "quoll/linux/image_helper/images.h"
#include "quoll/linux/posix/group_containers.h"
#include "quoll/linux/posix/lock_holder.h"
#include "quoll/linux/posix/subprocess.h"
#include "quoll/linux/posix/temporary_item.h"
#include "quoll/message/command_launcher.h"
#include "quoll/platform/bundle.h"
#include "quoll/platform/desktop.h"

namespace quoll::console {

namespace {

namespace fs = std::filesystem;
using State = Finding::State;

constexpr std::chrono::milliseconds kTimeOut{5000};

std::string reason() {
  return std::strerror(errno);
}

/// A workspace that opens nothing and remembers which application it was asked for.
class Addressee final : public platform::NSWorkspace {
 public:
  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& /*urls*/,
                std::string_view application,
                platform::NSWorkspaceLaunchOptions /*options*/) override {
    name = application;
    return true;
  }

  std::string name;
};

/// The identifier of the mail application that shares of this program go to.
std::string addressee(const std::shared_ptr<platform::NSBundle>& bundle) {
  auto workspace = std::make_shared<Addressee>();
  const platform::ScopedDesktop desktop({.bundle = bundle, .workspace = workspace});
  static_cast<void>(ExtensionUtilities::LaunchCommands(
      {foundation::NSURL::URLWithString("quoll://compose")}, false));
  return workspace->name;
}

Finding identity(const platform::NSBundle& bundle, const std::string& application) {
  const foundation::Value own = bundle.infoDictionary().objectForKey("CFBundleIdentifier");
  if (own.text() == nullptr) {
    return {"identity", State::kWorthKnowing,
            "this program does not know its identifier; shares go to " + application,
            "install quoll-share again: its Info.plist is missing or damaged"};
  }
  return {"identity", State::kGood, *own.text() + ", for " + application, ""};
}

std::optional<std::string> container_path() {
  const auto folder = posix::group_containers_folder();
  if (!folder) {
    return std::nullopt;
  }
  return foundation::appending_path_component(*folder, ExtensionUtilities::application_group);
}

/// Makes the container, for this user alone, and removes what killed shares have left in it. A
/// failure shows in the checks that follow.
void repair_container(const std::string& path) {
  std::error_code ignored;
  fs::create_directories(path, ignored);
  fs::permissions(path, fs::perms::group_all | fs::perms::others_all, fs::perm_options::remove,
                  ignored);
  posix::sweep_temporary_items(path);
}

/// The part of a path that exists already.
fs::path existing_part(fs::path path) {
  std::error_code ignored;
  while (!fs::exists(fs::symlink_status(path, ignored)) && path.has_relative_path()) {
    path = path.parent_path();
  }
  return path;
}

/// Why nothing can be written to a folder; empty when it can.
std::string why_not_writable(const std::string& path) {
  std::error_code ignored;
  const fs::path folder = existing_part(path);
  if (!fs::is_directory(folder, ignored)) {
    return folder.string() + " is not a folder";
  }
  return access(folder.c_str(), R_OK | W_OK | X_OK) == 0 ? "" : folder.string() + ": " + reason();
}

Finding container(const std::optional<std::string>& path) {
  const std::string name = "container";
  if (!path) {
    return {name, State::kBroken, "there is no place for it",
            "set HOME, or XDG_DATA_HOME to an absolute path"};
  }
  if (const std::string why = why_not_writable(*path); !why.empty()) {
    return {name, State::kBroken, "it cannot be written: " + why,
            "make that a folder of yours that you can write"};
  }
  struct stat status {};
  if (stat(path->c_str(), &status) != 0) {
    return {name, State::kGood, *path + " will be made by the first share", ""};
  }
  if (status.st_uid != geteuid()) {
    return {name, State::kWorthKnowing, *path + " belongs to another user",
            "chown it to yourself, with all that is in it"};
  }
  if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    return {name, State::kWorthKnowing, *path + " is open to other users",
            "chmod 700 \"" + *path + "\", or quollctl doctor --fix"};
  }
  return {name, State::kGood, *path, ""};
}

Finding space(const std::optional<std::string>& path) {
  constexpr std::uintmax_t kMebibyte = std::uintmax_t{1} << 20U;
  constexpr std::uintmax_t kLittle = 100 * kMebibyte;
  std::error_code error;
  const fs::space_info free = fs::space(existing_part(path.value_or("/")), error);
  const std::string found = std::to_string(free.available / kMebibyte) + " MiB free";
  if (error || free.available >= kLittle) {
    return {"space", State::kGood, error ? "not known: " + error.message() : found, ""};
  }
  return {"space", State::kWorthKnowing, found, "make room before large files are shared"};
}

Finding locks(const std::optional<std::string>& container) {
  const std::string folder = foundation::appending_path_component(container.value_or("/"),
                                                                  quoll::container::layout::locks);
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(folder, none)) {
    const auto holder = posix::lock_holder(entry.path());
    if (!holder) {
      continue;
    }
    const std::string program = holder->program.empty() ? "a program" : holder->program;
    const std::string who = holder->process == 0
                                ? program
                                : program + ", process " + std::to_string(holder->process) + ",";
    return {"locks", State::kWorthKnowing, who + " holds " + entry.path().filename().string(),
            "wait for it; if it has hung, end it: other shares wait as long"};
  }
  return {"locks", State::kGood, "nobody holds one", ""};
}

Finding session_bus(const gio::ApplicationLookup& lookup) {
  if (lookup.bus_trouble.empty()) {
    return {"session bus", State::kGood, "it answers", ""};
  }
  return {"session bus", lookup.has_entry ? State::kWorthKnowing : State::kBroken,
          "there is none: " + lookup.bus_trouble,
          "log in to a desktop session, or start the program by dbus-run-session"};
}

Finding mail_application(const std::string& application, const gio::ApplicationLookup& lookup) {
  const std::string name = "mail application";
  if (lookup.is_running || lookup.is_startable) {
    return {name, State::kGood,
            application + (lookup.is_running ? " is running" : " is started when it is needed"),
            ""};
  }
  if (lookup.has_entry) {
    return {name, State::kGood,
            application + " is started by its desktop entry, which takes URLs up to 131071 bytes",
            ""};
  }
  if (lookup.is_entry_broken) {
    return {name, State::kBroken, application + ".desktop is damaged, or its program is missing",
            "install the application again"};
  }
  return {name, State::kBroken, "no application answers to " + application,
          "install the mail application or quoll-compose"};
}

Finding links(const std::string& application) {
  const std::string handler = gio::handler_of_scheme("quoll");
  if (handler == application + ".desktop") {
    return {"quoll:// links", State::kGood, handler + " opens them", ""};
  }
  return {"quoll:// links", State::kWorthKnowing,
          handler.empty() ? "no application opens them" : handler + " opens them",
          "xdg-mime default " + application + ".desktop x-scheme-handler/quoll; shares do without"};
}

Finding image_helper() {
  const std::string path = image_helper::helper_path();
  if (access(path.c_str(), X_OK) == 0) {
    return {"images", State::kGood, path, ""};
  }
  return {"images", State::kWorthKnowing, path + ": " + reason(),
          "install quoll-share again: images that come as bytes are left out"};
}

Finding mail_client() {
  const std::string name = "mail client";
  const gio::ChosenMailClient chosen = gio::chosen_mail_client();
  if (!chosen.client) {
    return {name, State::kWorthKnowing, "no program is the default for mail",
            "choose one in the settings; quoll-compose keeps drafts and shows them until then"};
  }
  const gio::MailClient& client = *chosen.client;
  if (!chosen.gone.empty()) {
    return {name, State::kWorthKnowing,
            chosen.gone + " was chosen and is not there; drafts go to " + client.id,
            "quoll-compose --clients lists those that are there, --client NAME chooses one"};
  }
  if (client.way == gio::DraftWay::kNone) {
    return {name, State::kWorthKnowing, client.id + " cannot be given a draft",
            "open or import the drafts that quoll-compose keeps, or choose another by "
            "quoll-compose --client NAME"};
  }
  if (!client.reads_files()) {
    return {name, State::kWorthKnowing,
            client.id + " is in a sandbox that no attachment of a draft reaches",
            "open or import the drafts that quoll-compose keeps for it"};
  }
  return {name, State::kGood, client.id, ""};
}

struct Entry {
  const char* name;
  std::string file;
  bool is_program;
};

const std::array kEntries{
    Entry{"menu of KDE", "kpackage/Purpose/it.vorlent.quoll2.share/contents/code/main.bin", true},
    Entry{"menu of Nemo", "nemo/actions/quoll-share.nemo_action", false},
    Entry{"menu of Caja and PCManFM", "file-manager/actions/quoll-share.desktop", false},
    Entry{"menu of Thunar", "Thunar/sendto/quoll-share.desktop", false},
    Entry{"menu of Nautilus", QUOLL_NAUTILUS_EXTENSIONS "/libnautilus-quoll.so", false},
    Entry{"calls of programs", std::string("dbus-1/services/") + share::kIdentifier + ".service",
          false},
};

Finding menu_entry(const Entry& entry) {
  const std::string name = entry.name;
  const bool is_path = entry.file.starts_with('/');
  const std::string file = is_path ? entry.file : gio::find_data_file(entry.file);
  if (file.empty() || (is_path && access(file.c_str(), F_OK) != 0)) {
    const std::string package = is_path ? "quoll-share-nautilus" : "quoll-share";
    return {name, State::kWorthKnowing, "not installed",
            "install " + package + " to have it there"};
  }
  if (entry.is_program && access(file.c_str(), X_OK) != 0) {
    return {name, State::kWorthKnowing, file + " cannot be started",
            "chmod +x it, or install quoll-share again: the menu's program ends when it tries"};
  }
  return {name, State::kGood, file, ""};
}

/// The last lines that shares and the receiver of their drafts have logged. Only lines that this
/// user may read are shown.
Finding log_lines() {
  constexpr std::size_t kMost = 65536;
  // With a time limit: a large journal on a slow disk would let the user wait too long.
  const auto said =
      posix::run_program({"journalctl", "--quiet", "--no-pager", "--output=short-iso", "--lines=5",
                          "--identifier=quoll-share", "--identifier=quoll-compose"},
                         kMost, kTimeOut, std::chrono::steady_clock::now() + kTimeOut);
  Finding finding{"last log lines", State::kGood, "none", ""};
  if (said.end != posix::ProgramAnswer::End::kWell) {
    finding.found = "there is no system journal here";
    finding.advice = "look for quoll-share where the system keeps its log, or share with --verbose";
    finding.state = State::kWorthKnowing;
    return finding;
  }
  std::istringstream lines(said.output);
  for (std::string line; std::getline(lines, line);) {
    finding.lines.push_back(line);
  }
  if (!finding.lines.empty()) {
    finding.found = std::to_string(finding.lines.size());
  }
  return finding;
}

}  // namespace

std::vector<Finding> diagnose(bool repair) {
  const auto bundle = reading_desktop().bundle;
  const std::string application = addressee(bundle);
  const auto path = container_path();
  if (repair && path) {
    repair_container(*path);
  }
  if (repair && gio::handler_of_scheme("quoll").empty()) {
    static_cast<void>(gio::set_handler_of_scheme(application, "quoll"));
  }
  const auto lookup = gio::look_up_application(application, kTimeOut);
  std::vector<Finding> findings{identity(*bundle, application),
                                container(path),
                                space(path),
                                locks(path),
                                session_bus(lookup),
                                mail_application(application, lookup),
                                links(application),
                                image_helper(),
                                mail_client()};
  for (const Entry& entry : kEntries) {
    findings.push_back(menu_entry(entry));
  }
  findings.push_back(log_lines());
  return findings;
}

bool share_would_arrive(const std::vector<Finding>& findings) {
  return std::none_of(findings.begin(), findings.end(),
                      [](const Finding& finding) { return finding.state == State::kBroken; });
}

}  // namespace quoll::console
