#include "apps/console/menu_check.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>

#include "apps/share/identifier.h"
#include "quoll/linux/gio/applications.h"

namespace quoll::console {

namespace {

using State = Finding::State;

struct Entry {
  const char* name;
  std::string file;
  std::vector<const char*> programs;  ///< whose menu it is
  bool is_program = false;
};

const std::array kMenus{
    Entry{"menu of KDE",
          "kpackage/Purpose/it.vorlent.quoll2.share/contents/code/main.bin",
          {"dolphin", "gwenview", "spectacle", "plasmashell"},
          true},
    Entry{"menu of Nemo", "nemo/actions/quoll-share.nemo_action", {"nemo"}},
    Entry{"menu of Caja and PCManFM",
          "file-manager/actions/quoll-share.desktop",
          {"caja", "pcmanfm", "pcmanfm-qt"}},
    Entry{"menu of Thunar", "Thunar/sendto/quoll-share.desktop", {"thunar"}},
    Entry{"menu of Nautilus", QUOLL_NAUTILUS_EXTENSIONS "/libnautilus-quoll.so", {"nautilus"}},
};
const Entry kCalls{
    "calls of programs", std::string("dbus-1/services/") + share::kIdentifier + ".service", {}};

Finding check(const Entry& entry) {
  const std::string name = entry.name;
  const bool is_path = entry.file.starts_with('/');
  const std::string file = is_path ? entry.file : gio::find_data_file(entry.file);
  if (file.empty() || access(file.c_str(), F_OK) != 0) {
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

}  // namespace

std::vector<Finding> check_menus() {
  std::vector<Finding> findings;
  for (const Entry& menu : kMenus) {
    if (std::ranges::any_of(menu.programs, gio::is_program)) {
      findings.push_back(check(menu));
    }
  }
  if (findings.empty()) {
    findings.push_back({"menus", State::kGood, "no program with a menu for shares is here", ""});
  }
  findings.push_back(check(kCalls));
  return findings;
}

}  // namespace quoll::console
