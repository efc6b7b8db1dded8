#include "apps/console/session_environment.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <string>

#include "quoll/linux/posix/group_containers.h"

namespace quoll::console {

namespace {

using State = Finding::State;
using Variables = std::map<std::string, std::string>;

/// Each tells a program of a display; a program needs one of them.
constexpr std::array kDisplays{"DISPLAY", "WAYLAND_DISPLAY"};
/// What says how to reach the display, and where a program has its files.
constexpr std::array kOthers{
    "XAUTHORITY",    "HOME",          "XDG_CONFIG_HOME", "XDG_CURRENT_DESKTOP",
    "XDG_DATA_DIRS", "XDG_DATA_HOME", "XDG_RUNTIME_DIR", "QUOLL_GROUP_CONTAINERS"};

/// What the process was started with; none when that cannot be read.
std::optional<Variables> variables_of(int process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/environ", std::ios::binary);
  Variables variables;
  for (std::string entry; std::getline(file, entry, '\0');) {
    const std::size_t equals = std::min(entry.find('='), entry.size());
    variables[entry.substr(0, equals)] = entry.substr(std::min(equals + 1, entry.size()));
  }
  return variables.empty() ? std::nullopt : std::optional(variables);
}

const char* value_in(const Variables& variables, const char* name) {
  const auto found = variables.find(name);
  return found == variables.end() ? nullptr : found->second.c_str();
}

bool has_display(const Variables& variables) {
  return std::ranges::any_of(kDisplays, [&](const char* name) {
    const char* const value = value_in(variables, name);
    return value != nullptr && *value != '\0';
  });
}

/// Those that are set here, and there not or to something else, with a blank before each.
template <typename Names>
std::string different(const Names& names, const Variables& there) {
  std::string all;
  for (const char* const name : names) {
    const char* const here = std::getenv(name);
    const char* const other = value_in(there, name);
    if (here != nullptr && *here != '\0' && (other == nullptr || std::string(here) != other)) {
      all += std::string(" ") + name;
    }
  }
  return all;
}

/// The command that gives the bus what is set here, and when that shows.
std::string mending(const std::string& names) {
  const bool has_systemd = access("/run/systemd/system", F_OK) == 0;
  return std::string("dbus-update-activation-environment") + (has_systemd ? " --systemd" : "") +
         names + "; it counts once the mail application has ended: quoll-compose after 10 idle " +
         "seconds";
}

}  // namespace

Finding compare_environment(int process) {
  const std::string name = "environment";
  const auto there = variables_of(process);
  if (!there) {
    return {name, State::kGood, "not known", ""};
  }
  // Without any display there the other finding says so.
  const std::string names =
      (has_display(*there) ? different(kDisplays, *there) : "") + different(kOthers, *there);
  const auto container_there = posix::group_containers_folder(
      [&](const char* variable) { return value_in(*there, variable); });
  if (container_there != posix::group_containers_folder()) {
    const std::string where = container_there.value_or("nowhere");
    return {name, State::kBroken, "the mail application looks for shared files elsewhere: " + where,
            names.empty() ? "set QUOLL_GROUP_CONTAINERS, XDG_DATA_HOME and HOME here as they are "
                            "in the session"
                          : mending(names)};
  }
  if (!names.empty()) {
    return {name, State::kWorthKnowing, "other than this program's:" + names, mending(names)};
  }
  return {name, State::kGood, "that of this program", ""};
}

Finding check_display(int process) {
  const std::string name = "display";
  const auto there = variables_of(process);
  if (!there || has_display(*there)) {
    return {name, State::kGood, there ? "known" : "not known", ""};
  }
  const std::string names = different(kDisplays, *there);
  if (names.empty()) {
    return {name, State::kWorthKnowing,
            "no display is known: drafts are kept, no mail client is started",
            "log in to a desktop, or read them with quoll-compose --show"};
  }
  return {name, State::kWorthKnowing,
          "the bus does not know this display, so no window and no notification is shown",
          mending(names)};
}

}  // namespace quoll::console
