#include "apps/console/program_desktop.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

#include "apps/share/identifier.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/gio/launcher.h"
#include "quoll/linux/icu/date_formatter.h"
#include "quoll/linux/image_helper/images.h"
#include "quoll/linux/links/links.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/installed_file.h"
#include "quoll/linux/posix/program_bundle.h"
#include "quoll/linux/posix/steady_clock.h"
#include "quoll/linux/posix/system_log.h"
#include "quoll/linux/posix/thread_pool.h"
#include "quoll/linux/xml/styled_text.h"

namespace quoll::console {

namespace {

/// Opens nothing and answers true.
class AcceptingWorkspace final : public platform::NSWorkspace {
 public:
  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& /*urls*/,
                std::string_view /*application*/,
                platform::NSWorkspaceLaunchOptions /*options*/) override {
    return true;
  }
};

std::shared_ptr<platform::NSWorkspace> make_workspace() {
  const char* kind = std::getenv("QUOLL_WORKSPACE");
  if (kind != nullptr && std::string_view(kind) == "record") {
    return std::make_shared<AcceptingWorkspace>();
  }
  return gio::start_launcher({.urls = ""});  // any URL: the user of the console asks for it
}

class ErrorLog final : public platform::Log {
 public:
  void write(const platform::LogEvent& event) override {
    std::cerr << "quollctl: " + foundation::printable(event.text) + "\n";
  }
};

std::shared_ptr<platform::NSBundle> make_bundle() {
  return posix::make_program_bundle(
      share::kIdentifier, posix::installed_file(posix::InstalledFolder::kData, "Info.plist"),
      posix::installed_file(posix::InstalledFolder::kCatalogues, ""));
}

}  // namespace

platform::Desktop program_desktop() {
  auto workspace = make_workspace();  // first: it must come before any thread
  return {.bundle = make_bundle(),
          .files = posix::make_file_manager(),
          .coordinator = posix::coordinator_factory(),
          .workspace = std::move(workspace),
          .notifications = nullptr,
          .log = posix::make_system_log("quollctl"),
          .queue = posix::make_thread_pool(),
          .clock = posix::make_clock(),
          .images = image_helper::make_images(image_helper::helper_path()),
          .styled_text = xml::make_styled_text(true),
          .dates = icu::make_dates(),
          .links = links::make_links()};
}

platform::Desktop reading_desktop() {
  return {.bundle = make_bundle(),
          .files = posix::make_file_manager(),
          .coordinator = posix::coordinator_factory(),
          .log = std::make_shared<ErrorLog>(),
          .clock = posix::make_clock(),
          .dates = icu::make_dates(),
          .links = links::make_links()};
}

}  // namespace quoll::console
