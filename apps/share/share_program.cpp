#include "apps/share/share_program.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

#include "apps/sandbox/confine.h"
#include "apps/share/echoing_log.h"
#include "apps/share/identifier.h"
#include "apps/share/print_workspace.h"
#include "apps/share/report.h"
#include "apps/share/run.h"
#include "apps/share/staging_lock.h"
#include "quoll/container/group_container.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/gio/launcher.h"
#include "quoll/linux/image_helper/images.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/group_containers.h"
#include "quoll/linux/posix/installed_file.h"
#include "quoll/linux/posix/program_bundle.h"
#include "quoll/linux/posix/steady_clock.h"
#include "quoll/linux/posix/system_log.h"
#include "quoll/linux/posix/temporary_item.h"
#include "quoll/linux/posix/thread_pool.h"
#include "quoll/linux/xml/styled_text.h"
#include "quoll/platform/desktop.h"
#include "quoll/recording/recording_ports.h"
#include "quoll/share/share_view_controller.h"

namespace quoll::share {

namespace {

/// Makes the group container when it is missing, removes what killed shares left in it, and answers
/// its path; none when there is no container.
std::optional<std::string> prepare_container() {
  auto path = foundation::file_system_path(ExtensionUtilities::GroupPath());
  if (path) {
    posix::sweep_temporary_items(*path);
  }
  return path;
}

/// Throws when the container cannot be named in a command: a URL is UTF-8.
void refuse_unusable_container() {
  const auto folder = posix::group_containers_folder();
  if (folder && !foundation::is_utf8(*folder)) {
    throw std::runtime_error("the shared folder cannot be used: its path is not UTF-8: " +
                             foundation::printable(*folder));
  }
}

/// What the process may use from now on: what the selection needs, and no more.
sandbox::Confinement needs_of(const Selection& selection,
                              const std::optional<std::string>& container,
                              const std::string& image_helper) {
  sandbox::Confinement needs;
  for (const auto& item : selection.items) {
    if (auto path = foundation::file_system_path(item->value().as<foundation::NSURL>())) {
      needs.readable.push_back(std::move(*path));
    }
  }
  if (container) {
    needs.writable.push_back(*container);
  }
  needs.executable.push_back(image_helper);
  return needs;
}

/// Installs the desktop and answers its queue, which counts the background blocks. Starts no
/// thread. With `with_html` the reader of HTML is loaded, because a confined process cannot load
/// it.
std::shared_ptr<CountingQueue> install_desktop(std::shared_ptr<platform::NSWorkspace> workspace,
                                               const std::string& image_helper, bool with_html,
                                               bool is_verbose) {
  auto log = posix::make_system_log("quoll-share");
  if (is_verbose) {
    log = make_echoing_log(std::move(log));
  }
  platform::Desktop desktop = recording::recorded({
      .bundle = posix::make_program_bundle(
          kIdentifier, posix::installed_file(posix::InstalledFolder::kData, "Info.plist"),
          posix::installed_file(posix::InstalledFolder::kCatalogues, "")),
      .files = posix::make_file_manager(),
      .coordinator = posix::coordinator_factory(),
      .workspace = std::move(workspace),
      .notifications = nullptr,
      .log = std::move(log),
      .queue = posix::make_thread_pool(),
      .clock = posix::make_clock(),
      .images = image_helper::make_images(image_helper),
      .styled_text = xml::make_styled_text(with_html),
  });
  auto background = std::make_shared<CountingQueue>(std::move(desktop.queue));
  desktop.queue = background;
  platform::install(std::move(desktop));
  return background;
}

/// True when the extension still works on an item.
bool is_busy(const Selection& selection) {
  return std::ranges::any_of(selection.items, [](const auto& item) {
    return item->state() == SharedItem::State::kAsked ||
           item->state() == SharedItem::State::kAnswering;
  });
}

/// Reports what came of the share, removes its received files and answers the exit code. While a
/// thread still works on an item, it ends the program without destroying what the thread uses.
int end(Selection& selection, const std::vector<recording::Event>& events,
        const ShareSettings& settings) {
  std::ostringstream told;
  const ExitCode code = report(selection, events, told);
  settings.tell(told.str());
  selection.received_files.reset();
  if (is_busy(selection)) {
    _exit(static_cast<int>(code));
  }
  return static_cast<int>(code);
}

}  // namespace

int run_share(ShareRequest request, const ShareSettings& settings) {
  refuse_unusable_container();
  const auto launcher =
      settings.print ? nullptr : gio::start_launcher({.urls = "quoll://compose?", .most_urls = 1});
  // A write to a reader that went away then fails like any other write. The launcher has started
  // before, or the applications that it starts would inherit this.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  const std::string image_helper = image_helper::helper_path();
  const auto background = install_desktop(launcher ? launcher : make_print_workspace(STDOUT_FILENO),
                                          image_helper, request.html.has_value(), settings.verbose);
  const std::optional<std::string> container = prepare_container();
  Selection selection = make_selection(std::move(request), container);
  if (selection.empty()) {
    return end(selection, {}, settings);
  }
  sandbox::confine(needs_of(selection, container, image_helper));
  const StagingLock lock = lock_staging();
  const auto events = run<ShareViewController>(selection, *background, settings.progress);
  for (auto& [name, reason] : launcher ? launcher->left_out() : std::vector<gio::LeftOut>()) {
    selection.left_out.push_back({std::move(name), std::move(reason)});
  }
  return end(selection, events, settings);
}

}  // namespace quoll::share
