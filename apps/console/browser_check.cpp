#include "apps/console/browser_check.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "quoll/foundation/printable.h"
#include "quoll/linux/gio/applications.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::console {

namespace {

using State = Finding::State;

constexpr const char* kManifest = "/it.vorlent.quoll2.json";

struct BrowserKind {
  const char* name;
  std::array<const char*, 2> programs;
  const char* own_folder;     ///< of the user's, below the home folder
  const char* system_folder;  ///< as the browser's maker has fixed it
  const char* snap;
  const char* flatpak;
};

constexpr const char* kMozilla = "/usr/lib/mozilla/native-messaging-hosts";
constexpr const char* kChromium = "/etc/chromium/native-messaging-hosts";
constexpr std::array kBrowsers{
    BrowserKind{"Firefox",
                {"firefox", "firefox-esr"},
                ".mozilla/native-messaging-hosts",
                kMozilla,
                "firefox",
                "org.mozilla.firefox"},
    BrowserKind{"Chromium",
                {"chromium", "chromium-browser"},
                ".config/chromium/NativeMessagingHosts",
                kChromium,
                "chromium",
                "org.chromium.Chromium"},
    BrowserKind{"Chrome",
                {"google-chrome", "google-chrome-stable"},
                ".config/google-chrome/NativeMessagingHosts",
                "/etc/opt/chrome/native-messaging-hosts",
                "",
                "com.google.Chrome"},
    BrowserKind{"Brave",
                {"brave-browser", "brave"},
                ".config/BraveSoftware/Brave-Browser/NativeMessagingHosts",
                kChromium,
                "brave",
                "com.brave.Browser"},
    BrowserKind{"Vivaldi",
                {"vivaldi", "vivaldi-stable"},
                ".config/vivaldi/NativeMessagingHosts",
                kChromium,
                "vivaldi",
                "com.vivaldi.Vivaldi"},
    BrowserKind{"Edge",
                {"microsoft-edge", "microsoft-edge-stable"},
                ".config/microsoft-edge/NativeMessagingHosts",
                "/etc/opt/edge/native-messaging-hosts",
                "",
                "com.microsoft.Edge"},
};

/// The program that a manifest names; none when there is no manifest, or none that can be read.
std::optional<std::string> named_program(const std::string& manifest) {
  constexpr std::size_t kMost = 65536;
  const posix::UniqueFd file = posix::open_file(manifest, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  std::string text;
  bool ended = false;
  if (!file || !posix::read_until(file.get(), text, kMost, ended) || !ended) {
    return std::nullopt;
  }
  const auto read = nlohmann::json::parse(text, nullptr, false);
  const auto path = read.is_object() ? read.find("path") : read.end();
  return read.is_object() && path != read.end() && path->is_string()
             ? std::optional(path->get<std::string>())
             : std::nullopt;
}

/// How the browser was installed when that keeps it from starting programs; null otherwise.
const char* sandbox_of(const BrowserKind& browser) {
  const std::string exported = std::string("/var/lib/flatpak/exports/bin/") + browser.flatpak;
  if (*browser.snap != '\0' && gio::is_program(std::string("/snap/bin/") + browser.snap)) {
    return "a snap";
  }
  return gio::is_program(exported) || gio::is_program(browser.flatpak) ? "a Flatpak" : nullptr;
}

Finding check(const BrowserKind& browser, const std::string& home) {
  const std::string name = std::string("browser ") + browser.name;
  if (const char* const sandbox = sandbox_of(browser)) {
    return {name, State::kWorthKnowing,
            std::string("as ") + sandbox + " it may start no program of this system",
            "use the link that the extension offers, or a browser that is no snap and no Flatpak"};
  }
  for (const std::string& folder :
       {home + "/" + browser.own_folder, std::string(browser.system_folder)}) {
    const std::string manifest = folder + kManifest;
    if (access(manifest.c_str(), F_OK) != 0) {
      continue;
    }
    const auto program = named_program(manifest);
    if (!program || !program->starts_with('/') || !gio::is_program(*program)) {
      return {name, State::kWorthKnowing,
              manifest + " names " + (program ? foundation::printable(*program) : "no program") +
                  ", which cannot be started",
              "install quoll-share-browser again"};
    }
    return {name, State::kGood, manifest, ""};
  }
  return {name, State::kWorthKnowing, "not installed",
          "install quoll-share-browser to have it there"};
}

}  // namespace

std::vector<Finding> check_browsers() {
  const char* const home = std::getenv("HOME");
  std::vector<Finding> findings;
  for (const BrowserKind& browser : kBrowsers) {
    if (gio::is_program(browser.programs[0]) || gio::is_program(browser.programs[1]) ||
        sandbox_of(browser) != nullptr) {
      findings.push_back(check(browser, home != nullptr ? home : ""));
    }
  }
  return findings;
}

}  // namespace quoll::console
