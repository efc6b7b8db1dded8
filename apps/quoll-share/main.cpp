#include <unistd.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <memory>

#include "arguments.h"
#include "descriptors.h"
#include "linux/gio/launcher.h"
#include "linux/image_helper/images.h"
#include "linux/posix/coordinator.h"
#include "linux/posix/files.h"
#include "linux/posix/program_bundle.h"
#include "linux/posix/steady_clock.h"
#include "linux/posix/system_log.h"
#include "linux/posix/thread_pool.h"
#include "linux/sandbox/confine.h"
#include "linux/xml/styled_text.h"
#include "quoll/container/group_container.h"
#include "quoll/host/leave.h"
#include "quoll/host/print_workspace.h"
#include "quoll/host/report.h"
#include "quoll/host/run.h"
#include "quoll/host/select.h"
#include "quoll/host/turn.h"
#include "quoll/host/watched_desktop.h"
#include "quoll/host/watched_queue.h"
#include "quoll/host/watched_workspace.h"
#include "quoll/platform/desktop.h"
#include "quoll/share/share_view_controller.h"

namespace quoll {

namespace {

/// What the share still needs once it is known what is shared.
sandbox::Confinement needs_of(const host::Selection& selection, platform::NSFileManager& files,
                              const std::string& image_helper) {
  sandbox::Confinement needs;
  for (const auto& item : selection.items) {
    if (auto path = item->file_path()) {
      needs.readable.push_back(std::move(*path));
    }
  }
  // Asked for now, so that it is made while that is still allowed.
  const auto container = files.containerURLForSecurityApplicationGroupIdentifier(
      ExtensionUtilities::application_group);
  if (const auto path = container ? container->file_system_path() : std::nullopt) {
    needs.writable.push_back(*path);
  }
  needs.executable.push_back(image_helper);
  return needs;
}

int share(const Arguments& arguments) {
  close_inherited_descriptors(arguments.wanted.items);
  auto opened = std::make_shared<host::WatchedWorkspace>(
      arguments.print ? host::printer(STDOUT_FILENO)
                      : gio::start_launcher({.urls = "quoll://compose?", .times = 1}));
  // A reader that went away is an error of the write, to be reported like any other. Not before the
  // launcher has started: the applications would inherit it.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  host::Selection selection = host::select(arguments.wanted);
  if (selection.empty()) {
    return host::leave(selection, host::report(selection, {}, *opened, std::cerr));
  }
  const auto files = posix::make_file_manager();
  const auto background = std::make_shared<host::WatchedQueue>(posix::make_thread_pool());
  const std::string image_helper = image_helper::helper_path();
  platform::install({
      .bundle =
          posix::make_program_bundle("it.vorlent.quoll2.Quoll-Share", posix::information_file()),
      .files = host::watched_files(files),
      .coordinator = posix::coordinator_factory(),
      .workspace = opened,
      .notifications = nullptr,
      .log = host::watched_log(posix::make_system_log("quoll-share"), arguments.verbose),
      .queue = background,
      .clock = posix::make_clock(),
      .images = image_helper::make_images(image_helper),
      .styled_text = xml::make_styled_text(selection.html.has_value()),
  });
  sandbox::confine(needs_of(selection, *files, image_helper));
  const host::Turn turn = host::take_turn();
  const host::Outcome outcome = host::run<ShareViewController>(selection, *background);
  return host::leave(selection, host::report(selection, outcome, *opened, std::cerr));
}

}  // namespace

}  // namespace quoll

int main(int argc, char** argv) {
  quoll::hold_standard_descriptors();
  try {
    const auto arguments = quoll::parse(argc, argv);
    const int* const ended = std::get_if<int>(&arguments);
    return ended != nullptr ? *ended : quoll::share(std::get<quoll::Arguments>(arguments));
  } catch (const std::exception& exception) {
    std::cerr << "not opened: " << exception.what() << '\n';
    return static_cast<int>(quoll::host::ExitCode::kNotOpened);
  }
}
