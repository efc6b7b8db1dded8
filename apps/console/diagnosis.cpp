#include "apps/console/diagnosis.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include "apps/console/browser_check.h"
#include "apps/console/container_check.h"
#include "apps/console/menu_check.h"
#include "apps/console/program_desktop.h"
#include "apps/console/receiver_check.h"
#include "apps/share/folder_helper.h"
#include "apps/share/request/clipboard_programs.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/linux/gio/applications.h"
#include "quoll/linux/image_helper/images.h"
#include "quoll/linux/posix/subprocess.h"
#include "quoll/message/command_launcher.h"
#include "quoll/platform/bundle.h"
#include "quoll/platform/desktop.h"

namespace quoll::console {

namespace {

using State = Finding::State;

constexpr std::chrono::milliseconds kTimeOut{5000};

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

Finding links(const std::string& application) {
  const std::string handler = gio::handler_of_scheme("quoll");
  if (handler == application + ".desktop") {
    return {"quoll:// links", State::kGood, handler + " opens them", ""};
  }
  return {"quoll:// links", State::kWorthKnowing,
          handler.empty() ? "no application opens them" : handler + " opens them",
          "xdg-mime default " + application + ".desktop x-scheme-handler/quoll; shares do without"};
}

/// Chooses the application that opens command URLs when none does.
void repair_links(const std::string& application, Repairs& repairs) {
  if (gio::handler_of_scheme("quoll").empty()) {
    const bool is_set = gio::set_handler_of_scheme(application, "quoll");
    (is_set ? repairs.done : repairs.failed)
        .push_back((is_set ? "gave quoll:// links to " : "could not give quoll:// links to ") +
                   application);
  }
}

Finding told(const Repairs& repairs) {
  Finding finding{"repairs", State::kGood, repairs.done.empty() ? "none" : "", ""};
  for (const std::string& done : repairs.done) {
    finding.found += (finding.found.empty() ? "" : "; ") + done;
  }
  for (const std::string& failed : repairs.failed) {
    finding.found += "; " + failed;
    finding.state = State::kWorthKnowing;
  }
  return finding;
}

/// Keeps the last line that is logged.
class LastLine final : public platform::Log {
 public:
  void write(const platform::LogEvent& event) override { text = event.text; }

  std::string text;
};

/// A picture of one point, as a GIF file.
constexpr std::string_view kSmallPicture(
    "GIF89a\1\0\1\0\200\0\0\0\0\0\377\377\377,\0\0\0\0\1\0\1\0\0\2\2D\1\0;", 35);

/// Has the helper write a picture anew, as a share does with one that comes as bytes.
Finding pictures() {
  const std::string helper = image_helper::helper_path();
  const auto log = std::make_shared<LastLine>();
  const platform::ScopedDesktop desktop({.log = log});
  const foundation::Bytes picture(kSmallPicture.begin(), kSmallPicture.end());
  if (image_helper::make_images(helper)->convert(
          picture, platform::BitmapImageFileType::NSBitmapImageFileTypePNG)) {
    return {"pictures", State::kGood, helper + " writes them", ""};
  }
  return {"pictures", State::kBroken, helper + ": " + log->text,
          "install quoll-share again: pictures that come as bytes are left out"};
}

/// Has the helper start, which it cannot when a library of it is missing.
Finding folders() {
  constexpr std::size_t kMost = 1000;
  const std::string helper = share::folder_helper_path();
  const auto said = posix::run_program({helper, "--version"}, kMost, kTimeOut,
                                       std::chrono::steady_clock::now() + kTimeOut);
  if (said.end == posix::ProgramAnswer::End::kWell) {
    return {"folders", State::kGood, helper + " packs them", ""};
  }
  return {"folders", State::kWorthKnowing,
          helper + (said.complaint.empty() ? " cannot be started" : ": " + said.complaint),
          "install quoll-share again: folders are left out"};
}

/// Of the display that is asked first; another, such as X beside Wayland, shows the same clipboard.
Finding clipboard() {
  for (const share::ClipboardProgram& tool : share::kClipboardPrograms) {
    const char* const display = std::getenv(tool.display);
    if (display == nullptr || *display == '\0') {
      continue;
    }
    if (gio::is_program(tool.name)) {
      return {"clipboard", State::kGood, std::string("read by ") + tool.name, ""};
    }
    return {"clipboard", State::kWorthKnowing, std::string(tool.name) + " is missing",
            std::string("install ") + tool.package + " to share what the clipboard holds"};
  }
  return {"clipboard", State::kGood, "there is no display", ""};
}

/// The last lines that shares and the receiver of their drafts have logged. Only lines that this
/// user may read are shown.
Finding log_lines() {
  constexpr std::size_t kMost = 65536;
  constexpr const char* kOtherLogs =
      "look for quoll-share where the system keeps its log, or share with --verbose";
  // With a time limit: a large journal on a slow disk would let the user wait too long.
  const auto said =
      posix::run_program({"journalctl", "--quiet", "--no-pager", "--output=short-iso", "--lines=5",
                          "--identifier=quoll-share", "--identifier=quoll-compose"},
                         kMost, kTimeOut, std::chrono::steady_clock::now() + kTimeOut);
  Finding finding{"last log lines", State::kGood, "none", ""};
  if (said.end != posix::ProgramAnswer::End::kWell) {
    finding.found = "there is no system journal here";
    finding.advice = kOtherLogs;
    finding.state = State::kWorthKnowing;
    return finding;
  }
  std::istringstream lines(said.output);
  for (std::string line; std::getline(lines, line);) {
    finding.lines.push_back(line);
  }
  if (!finding.lines.empty()) {
    finding.found = std::to_string(finding.lines.size());
  } else if (access("/run/systemd/journal/socket", F_OK) != 0) {
    finding.found = "no journal runs here";
    finding.advice = kOtherLogs;
    finding.state = State::kWorthKnowing;
  }
  return finding;
}

}  // namespace

std::vector<Finding> diagnose(bool repair) {
  const auto bundle = reading_desktop().bundle;
  const std::string application = addressee(bundle);
  Repairs repairs;
  if (repair) {
    repair_links(application, repairs);
  }
  std::vector<Finding> findings{identity(*bundle, application)};
  const auto add = [&](std::vector<Finding> more) {
    std::ranges::move(more, std::back_inserter(findings));
  };
  {
    const platform::ScopedDesktop desktop(reading_desktop());
    add(check_container(repair ? &repairs : nullptr));
  }
  if (repair) {
    findings.insert(findings.begin() + 1, told(repairs));
  }
  add({pictures(), folders(), clipboard()});
  add(check_receiver(application));
  add({links(application)});
  add(check_menus());
  add(check_browsers());
  add({log_lines()});
  return findings;
}

bool share_would_arrive(const std::vector<Finding>& findings) {
  return std::none_of(findings.begin(), findings.end(),
                      [](const Finding& finding) { return finding.state == State::kBroken; });
}

}  // namespace quoll::console
