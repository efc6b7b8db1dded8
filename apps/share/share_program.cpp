#include "apps/share/share_program.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <exception>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

#include "apps/sandbox/confine.h"
#include "apps/share/container_trouble.h"
#include "apps/share/draft_workspace.h"
#include "apps/share/folder_helper.h"
#include "apps/share/identifier.h"
#include "apps/share/interruption.h"
#include "apps/share/moving_files.h"
#include "apps/share/pack_folders.h"
#include "apps/share/prepare.h"
#include "apps/share/prepared_images.h"
#include "apps/share/print_workspace.h"
#include "apps/share/report.h"
#include "apps/share/request/clipboard.h"
#include "apps/share/result.h"
#include "apps/share/run.h"
#include "apps/share/staging_lock.h"
#include "apps/share/steps.h"
#include "apps/share/terminal_line.h"
#include "quoll/container/group_container.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/gio/launcher.h"
#include "quoll/linux/image_helper/images.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/descriptor_io.h"
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

/// What the process may use from now on: what the selection needs, and no more.
sandbox::Confinement needs_of(const Selection& selection,
                              const std::optional<std::string>& container,
                              const std::string& image_helper, const std::string& folder_helper) {
  sandbox::Confinement needs;
  for (const auto& item : selection.items) {
    if (auto path = foundation::file_system_path(item->value().as<foundation::NSURL>())) {
      (item->is_folder() ? needs.listable : needs.readable).push_back(std::move(*path));
    }
  }
  if (container) {
    needs.writable.push_back(*container);
  }
  needs.executable.push_back(image_helper);
  if (!needs.listable.empty()) {
    needs.executable.push_back(folder_helper);
  }
  return needs;
}

/// What is wrong with the group container when no command could name what is in it.
std::optional<ContainerTrouble> unusable_container() {
  const auto folder = posix::group_containers_folder();
  return folder && !foundation::is_utf8(*folder) ? container_trouble() : std::nullopt;
}

/// What the program keeps of the desktop that it has installed.
struct Installed {
  std::shared_ptr<CountingQueue> background;  ///< counts the background blocks
  std::shared_ptr<DraftWorkspace> drafts;
  std::shared_ptr<MovingFiles> files;
};

/// Installs the desktop. Starts no thread. With `with_html` the reader of HTML is loaded, because a
/// confined process cannot load it.
Installed install_desktop(std::shared_ptr<platform::NSWorkspace> workspace,
                          std::shared_ptr<platform::Log> log, const std::string& image_helper,
                          bool with_html) {
  auto files = std::make_shared<MovingFiles>(posix::make_file_manager());
  platform::Desktop desktop = recording::recorded({
      .bundle = posix::make_program_bundle(
          kIdentifier, posix::installed_file(posix::InstalledFolder::kData, "Info.plist"),
          posix::installed_file(posix::InstalledFolder::kCatalogues, "")),
      .files = files,
      .coordinator = posix::coordinator_factory(),
      .workspace = std::move(workspace),
      .notifications = nullptr,
      .log = std::move(log),
      .queue = posix::make_thread_pool(),
      .clock = posix::make_clock(),
      .images = std::make_shared<PreparedImages>(image_helper::make_images(image_helper), files),
      .styled_text = xml::make_styled_text(with_html),
  });
  // The drafts are outside of what is recorded: a command that is not passed on was given to
  // nobody.
  Installed installed{std::make_shared<CountingQueue>(std::move(desktop.queue)),
                      std::make_shared<DraftWorkspace>(std::move(desktop.workspace)),
                      std::move(files)};
  desktop.queue = installed.background;
  desktop.workspace = installed.drafts;
  platform::install(std::move(desktop));
  return installed;
}

/// What is wrong with the shared folder, and what to do. A full one is told without an item too.
std::optional<std::string> folder_trouble(const ShareResult& result, bool has_items) {
  const bool is_full = std::ranges::any_of(result.left_out, [](const LeftOut& left) {
    return left.why.ends_with(posix::error_words(ENOSPC));
  });
  if (!is_full && (!has_items || (!result.folder_trouble && result.left_out.empty()))) {
    return std::nullopt;
  }
  if (const auto trouble = container_trouble()) {
    return trouble->found + "; " + trouble->advice;
  }
  return is_full ? "the shared folder has too little room: " +
                       posix::group_containers_folder().value_or("") + "; make room there"
                 : result.folder_trouble;
}

/// Ends the program, without what was prepared, when it is interrupted.
void end_if_interrupted(Selection& selection) {
  if (Interruption::has_come()) {
    selection.prepared_files.reset();
    Interruption::end_program();
  }
}

/// True when the extension still works on an item.
bool is_busy(const Selection& selection) {
  return std::ranges::any_of(selection.items, [](const auto& item) {
    return item->state() == SharedItem::State::kAsked ||
           item->state() == SharedItem::State::kAnswering;
  });
}

/// One share from its request to the report.
class Share {
 public:
  explicit Share(const ShareSettings& settings)
      : settings_(settings), steps_(std::make_shared<Steps>(settings.verbose)) {}

  int run(ShareRequest request);
  int run(const ReadRequest& read);
  int tell(const ShareResult& result);

 private:
  Installed begin(bool with_html);
  std::optional<std::string> find_container();
  Selection select(ShareRequest request, const std::optional<std::string>& container);
  int run_confined(Selection& selection, const Installed& desktop,
                   std::optional<posix::LockHolder> holder);
  StagingLock prepare_and_lock(Selection& selection, MovingFiles& files,
                               std::optional<posix::LockHolder> holder);
  [[nodiscard]] bool pack(Selection& selection) const;
  [[nodiscard]] Progress early_steps() const;
  [[nodiscard]] Progress later_steps() const;
  int end(Selection& selection, const std::vector<recording::Event>& events);

  const ShareSettings& settings_;
  std::shared_ptr<const Steps> steps_;
  std::shared_ptr<platform::Log> log_ = posix::make_system_log("quoll-share");
  std::shared_ptr<gio::LauncherWorkspace> launcher_;  ///< null with `print`
  std::string image_helper_ = image_helper::helper_path();
  std::string folder_helper_ = folder_helper_path();
  /// From when files may be made until it is the share's turn.
  std::optional<Interruption> interruption_;
};

int Share::run(ShareRequest request) {
  if (const auto trouble = request.has_clipboard ? add_clipboard(request) : std::nullopt) {
    ShareResult result =
        failed_share("the clipboard: " + trouble->why, "copy it again, or share the file");
    result.logged_as = trouble->logged_as.empty() ? "" : "the clipboard: " + trouble->logged_as;
    return tell(result);
  }
  if (const auto trouble = unusable_container()) {
    return tell(failed_share(trouble->found, trouble->advice));
  }
  const Installed desktop = begin(request.html.has_value());
  const std::optional<std::string> container = find_container();
  Selection selection = select(std::move(request), container);
  if (selection.empty()) {
    return end(selection, {});
  }
  // A confined process cannot tell.
  const auto holder = staging_lock_holder(settings_.tell_of_waiting);
  sandbox::confine(needs_of(selection, container, image_helper_, folder_helper_));
  steps_->tell("the program has confined itself");
  return run_confined(selection, desktop, holder);
}

int Share::run(const ReadRequest& read) {
  if (const auto trouble = unusable_container()) {
    return tell(failed_share(trouble->found, trouble->advice));
  }
  const Installed desktop = begin(true);
  const std::optional<std::string> container = find_container();
  const auto holder = staging_lock_holder(settings_.tell_of_waiting);
  sandbox::confine(needs_of({}, container, image_helper_, folder_helper_));
  steps_->tell("the program has confined itself");
  auto request = read();
  if (const auto* const ended = std::get_if<ShareResult>(&request)) {
    return tell(*ended);
  }
  Selection selection = select(std::move(std::get<ShareRequest>(request)), container);
  return selection.empty() ? end(selection, {}) : run_confined(selection, desktop, holder);
}

std::optional<std::string> Share::find_container() {
  auto container = prepare_container();
  steps_->tell(container ? "the shared folder is " + *container : "there is no shared folder");
  return container;
}

Selection Share::select(ShareRequest request, const std::optional<std::string>& container) {
  interruption_.emplace(settings_.starter);
  Selection selection = make_selection(std::move(request), container);
  end_if_interrupted(selection);
  steps_->tell("what was given is read: " + std::to_string(selection.items.size()) +
               (selection.items.size() == 1 ? " item, " : " items, ") +
               std::to_string(selection.left_out.size()) + " left out");
  return selection;
}

/// What remains to be done in the sandbox.
int Share::run_confined(Selection& selection, const Installed& desktop,
                        std::optional<posix::LockHolder> holder) {
  desktop.drafts->set_envelope(selection.envelope);
  StagingLock lock = prepare_and_lock(selection, *desktop.files, std::move(holder));
  if (selection.empty()) {
    return end(selection, {});
  }
  const auto events =
      share::run<ShareViewController>(selection, *desktop.background, later_steps());
  if (!is_busy(selection)) {
    lock.reset();  // whoever is told may take any time to read
  }
  return end(selection, events);
}

/// Starts the launcher and installs the desktop.
Installed Share::begin(bool with_html) {
  if (!settings_.print) {
    launcher_ = gio::start_launcher({.urls = "quoll://compose?", .most_urls = 1});
    steps_->tell("the launcher is started");
  }
  // A write to a reader that went away then fails like any other write. The launcher has started
  // before, or the applications that it starts would inherit this.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  return install_desktop(
      make_telling_workspace(launcher_ ? launcher_ : make_print_workspace(STDOUT_FILENO), steps_),
      make_telling_log(log_, steps_), image_helper_, with_html);
}

/// Prepares the files and takes the staging lock. Ends the program when it is interrupted, without
/// what was prepared.
StagingLock Share::prepare_and_lock(Selection& selection, MovingFiles& files,
                                    std::optional<posix::LockHolder> holder) {
  const auto begin = steps_->elapsed();
  const bool is_prepared =
      pack(selection) && prepare(selection, files, image_helper_, early_steps());
  steps_->tell("the files are prepared");
  if (steps_->elapsed() - begin > std::chrono::seconds(1)) {
    holder.reset();  // by now it may be somebody else
  }
  StagingLock lock = is_prepared && !selection.empty()
                         ? lock_staging(holder, settings_.tell_of_waiting)
                         : StagingLock();
  end_if_interrupted(selection);
  interruption_.reset();
  if (settings_.progress) {
    settings_.progress(1, 2);
  }
  steps_->tell(lock ? "it is this share's turn" : "there is no lock to wait for");
  return lock;
}

/// Packs the folders, and says beforehand what is packed and whether all of it may be too much for
/// a mail. False when it is interrupted.
bool Share::pack(Selection& selection) const {
  TerminalLine shown;
  const auto note = [&](const std::string& line) {
    shown.clear();
    if (settings_.note) {
      settings_.note(line + "\n");
    }
  };
  const std::size_t items = selection.items.size();
  const auto progress = [&](std::uint64_t bytes) {
    settings_.progress ? settings_.progress(0, 2 * items + 1)
                       : shown.show(std::to_string(bytes / 1'000'000) + " MB packed");
  };
  const bool is_packed = pack_folders(selection, {folder_helper_, note, progress});
  if (const auto line = note_about_size(selection); is_packed && line) {
    note(*line);
  }
  return is_packed;
}

/// The progress of the preparation, which stays below the half of all until the turn has come.
Progress Share::early_steps() const {
  return !settings_.progress ? Progress() : [this](std::size_t done, std::size_t steps) {
    settings_.progress(done, 2 * steps + 1);
  };
}

/// The progress of the extension, the second half.
Progress Share::later_steps() const {
  return !settings_.progress ? Progress() : [this](std::size_t answered, std::size_t items) {
    settings_.progress(items + answered, 2 * items);
  };
}

/// Tells what came of the share and removes its prepared files. While a thread still works on an
/// item, it ends the program without destroying what the thread uses.
int Share::end(Selection& selection, const std::vector<recording::Event>& events) {
  ShareResult result = result_of(selection, events);
  result.folder_trouble = folder_trouble(result, !selection.empty());
  if (!launcher_) {
    result.application = "standard output";
  } else if (result.is_opened) {
    result.draft = launcher_->draft();
    for (auto& [name, reason] : launcher_->left_out()) {
      result.left_out.push_back({std::move(name), std::move(reason), "the application says why"});
    }
  }
  const int code = tell(result);
  selection.prepared_files.reset();
  if (is_busy(selection)) {
    _exit(code);
  }
  return code;
}

int Share::tell(const ShareResult& result) {
  const auto time = steps_->elapsed();
  const std::string line = log_line(result, time);
  log_->write({line});
  steps_->tell(line);
  if (settings_.json) {
    static_cast<void>(posix::write_all(STDOUT_FILENO, as_json(result, time) + "\n"));
  } else if (result.is_opened && !settings_.print && isatty(STDERR_FILENO) == 1) {
    static_cast<void>(posix::write_all(STDERR_FILENO, where_it_went(result) + "\n"));
  }
  if (settings_.tell_result) {
    settings_.tell_result(result);
  }
  std::ostringstream told;
  report(result, told);
  settings_.tell(told.str());
  return static_cast<int>(result.code());
}

template <typename Request>
int run_guarded(Request&& request, const ShareSettings& settings) {
  Share share(settings);
  try {
    return share.run(std::forward<Request>(request));
  } catch (const std::exception& exception) {
    return share.tell(failed_share(exception.what()));
  }
}

}  // namespace

int run_share(ShareRequest request, const ShareSettings& settings) {
  return run_guarded(std::move(request), settings);
}

int run_share(const ReadRequest& read, const ShareSettings& settings) {
  return run_guarded(read, settings);
}

}  // namespace quoll::share
