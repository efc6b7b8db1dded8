#include "apps/share-service/share_process.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "apps/share/exit_code.h"
#include "apps/share/share_watch.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/installed_file.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::share_service {

namespace {

constexpr gsize kBlock = 4096;

using gio::ObjectHandle;

/// The texts, the recipients and the items, as `quoll-share --null` reads them.
std::string list_of(const share::ShareRequest& request) {
  std::string parts;
  const auto add = [&](const std::string& part) { parts.append(part).push_back('\0'); };
  for (const auto* text :
       {&request.title, &request.envelope.subject, request.html ? &request.html : &request.text}) {
    if (*text) {
      add(**text);
    }
  }
  for (const auto* all : {&request.envelope.to, &request.envelope.cc, &request.items}) {
    std::ranges::for_each(*all, add);
  }
  return parts;
}

/// A file with these bytes; none, with `errno` set, when it cannot be made.
posix::UniqueFd file_of(const std::string& bytes) {
  posix::UniqueFd file(memfd_create("list", MFD_CLOEXEC));
  if (!file || !posix::write_all(file.get(), bytes) || lseek(file.get(), 0, SEEK_SET) != 0) {
    file.reset();
  }
  return file;
}

/// The number of the item's descriptor in `quoll-share`.
int number_of(std::size_t item) {
  constexpr int kFirst = 3;
  return kFirst + static_cast<int>(item);
}

std::vector<std::string> command_of(const ShareCall& call, bool has_list) {
  const share::ShareRequest& request = call.request;
  std::vector<std::string> command{
      posix::installed_file(posix::InstalledFolder::kPrograms, "quoll-share")};
  if (has_list) {
    command.emplace_back("--null");
  }
  if (call.clipboard) {
    command.emplace_back("--clipboard");
  }
  const auto add_listed = [&](const char* option, std::size_t times) {
    for (std::size_t time = 0; time < times; ++time) {
      command.insert(command.end(), {option, "-"});
    }
  };
  add_listed("--title", request.title ? 1 : 0);
  add_listed("--subject", request.envelope.subject ? 1 : 0);
  add_listed(request.html ? "--html" : "--text", request.html || request.text ? 1 : 0);
  add_listed("--to", request.envelope.to.size());
  add_listed("--cc", request.envelope.cc.size());
  for (std::size_t at = 0; at < request.descriptor_items.size(); ++at) {
    const share::DescriptorItem& item = request.descriptor_items[at];
    command.insert(command.end(), {"--descriptor", std::to_string(number_of(at)) + ":" +
                                                       item.media_type + ":" + item.name});
  }
  return command;
}

void pass_token(GSubprocessLauncher* launcher, const char* variable, const std::string& token) {
  if (token.empty()) {
    g_subprocess_launcher_unsetenv(launcher, variable);
  } else {
    g_subprocess_launcher_setenv(launcher, variable, token.c_str(), TRUE);
  }
}

/// Runs between fork and exec, where little may be done.
void allow_usual_descriptors(gpointer bounds) {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    limit.rlim_cur = std::min(static_cast<const ShareBounds*>(bounds)->descriptors, limit.rlim_max);
    setrlimit(RLIMIT_NOFILE, &limit);
  }
}

/// `progress` is its end of the pipe for that.
ObjectHandle<GSubprocess> spawn(ShareCall& call, posix::UniqueFd progress, ShareBounds bounds,
                                gio::ErrorSlot& error) {
  const std::string parts = list_of(call.request);
  posix::UniqueFd list = file_of(parts);
  if (!list) {
    g_set_error(error.out(), G_IO_ERROR, g_io_error_from_errno(errno),
                "the request cannot be held: %s", posix::error_words(errno).c_str());
    return nullptr;
  }
  const auto flags = static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_SILENCE |
                                                   G_SUBPROCESS_FLAGS_STDERR_PIPE);
  const ObjectHandle<GSubprocessLauncher> launcher(g_subprocess_launcher_new(flags));
  g_subprocess_launcher_take_stdin_fd(launcher.get(), list.release());
  g_subprocess_launcher_set_child_setup(launcher.get(), allow_usual_descriptors, &bounds, nullptr);
  auto command = command_of(call, !parts.empty());
  const int number = number_of(call.request.descriptor_items.size());
  command.insert(command.end(), {"--progress", std::to_string(number)});
  g_subprocess_launcher_take_fd(launcher.get(), progress.release(), number);
  for (std::size_t at = 0; at < call.request.descriptor_items.size(); ++at) {
    g_subprocess_launcher_take_fd(
        launcher.get(), call.request.descriptor_items[at].descriptor.release(), number_of(at));
  }
  pass_token(launcher.get(), "XDG_ACTIVATION_TOKEN", call.tokens.activation);
  pass_token(launcher.get(), "DESKTOP_STARTUP_ID", call.tokens.startup);
  std::vector<const char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command) {
    arguments.push_back(argument.c_str());
  }
  arguments.push_back(nullptr);
  return ObjectHandle<GSubprocess>(
      g_subprocess_launcher_spawnv(launcher.get(), arguments.data(), error.out()));
}

/// Every step that waits holds a reference to it.
class ShareProcess final : public RunningShare, public std::enable_shared_from_this<ShareProcess> {
 public:
  ShareProcess(ObjectHandle<GSubprocess> process, posix::UniqueFd progress,
               std::chrono::seconds time, std::function<void(const ShareEnd&)> ended)
      : process_(std::move(process)),
        watch_(std::in_place, std::move(progress), [this] { wait_anew(time_); }),
        time_(time),
        ended_(std::move(ended)),
        given_up_(g_cancellable_new()) {}

  void begin() {
    wait_anew(time_);
    read_on();
    g_subprocess_wait_async(process_.get(), given_up_.get(), exited, reference());
  }

  void cancel() override {
    constexpr std::chrono::seconds kPatience{5};  // it may hang in a system call
    if (watch_) {
      watch_->cancel();
    }
    if (watch_ && watch_->is_cancelled()) {
      wait_anew(kPatience);
    }
  }

  void offer_cancelling(GDBusConnection* bus) override {
    watch_->offer_cancelling([bus] { return bus; });
  }

 private:
  using Reference = std::shared_ptr<ShareProcess>;

  gpointer reference() { return new Reference(shared_from_this()); }
  static Reference taken(gpointer data) {
    const std::unique_ptr<Reference> owner(static_cast<Reference*>(data));
    return *owner;
  }

  void read_on() {
    g_input_stream_read_bytes_async(g_subprocess_get_stderr_pipe(process_.get()), kBlock,
                                    G_PRIORITY_DEFAULT, given_up_.get(), read, reference());
  }

  static void read(GObject* source, GAsyncResult* result, gpointer data) {
    const Reference self = taken(data);
    GBytes* const bytes = g_input_stream_read_bytes_finish(G_INPUT_STREAM(source), result, nullptr);
    const gsize size = bytes != nullptr ? g_bytes_get_size(bytes) : 0;
    if (size > 0 && self->told_.size() <= kMostTold) {
      self->told_.append(static_cast<const char*>(g_bytes_get_data(bytes, nullptr)), size);
    }
    g_bytes_unref(bytes);
    if (size > 0) {
      self->read_on();
    } else {
      self->is_told_ = true;
      self->end_when_over();
    }
  }

  static void exited(GObject* source, GAsyncResult* result, gpointer data) {
    const Reference self = taken(data);
    g_subprocess_wait_finish(G_SUBPROCESS(source), result, nullptr);
    self->has_exited_ = true;
    self->end_when_over();
  }

  static gboolean late(gpointer data) {
    auto& self = *static_cast<ShareProcess*>(data);
    self.deadline_ = 0;
    self.is_late_ = true;
    g_subprocess_force_exit(self.process_.get());
    g_cancellable_cancel(self.given_up_.get());
    return G_SOURCE_REMOVE;
  }

  void wait_anew(std::chrono::seconds time) {
    stop_waiting();
    deadline_ = g_timeout_add_seconds(static_cast<guint>(time.count()), late, this);
  }

  void stop_waiting() {
    if (deadline_ != 0) {
      g_source_remove(std::exchange(deadline_, 0));
    }
  }

  void end_when_over() {
    if (!has_exited_ || !is_told_) {
      return;
    }
    stop_waiting();
    const ShareEnd result = end();
    watch_.reset();
    ended_(result);
  }

  [[nodiscard]] ShareEnd end() const {
    constexpr int kNotOpened = static_cast<int>(share::ExitCode::kNotOpened);
    if (watch_->is_cancelled()) {
      return {kNotOpened, "not opened: it was cancelled", true};
    }
    if (is_late_) {
      return {kNotOpened, "not opened: nothing moved on for " + std::to_string(time_.count()) +
                              " s; share less at once"};
    }
    if (g_subprocess_get_if_exited(process_.get()) == FALSE) {
      return {kNotOpened, "not opened: quoll-share was ended by signal " +
                              std::to_string(g_subprocess_get_term_sig(process_.get())) +
                              "; quollctl doctor tells more"};
    }
    const int code = g_subprocess_get_exit_status(process_.get());
    const bool is_wrong_use = code == static_cast<int>(share::ExitCode::kUsage);
    return {is_wrong_use ? kNotOpened : code, told_};
  }

  ObjectHandle<GSubprocess> process_;
  std::optional<share::ShareWatch> watch_;  ///< none once it has ended
  std::chrono::seconds time_;
  std::function<void(const ShareEnd&)> ended_;
  ObjectHandle<GCancellable> given_up_;
  std::string told_;
  guint deadline_ = 0;
  bool has_exited_ = false;
  bool is_told_ = false;
  bool is_late_ = false;
};

}  // namespace

std::shared_ptr<RunningShare> start_share(ShareCall call, const ShareBounds& bounds,
                                          std::function<void(const ShareEnd&)> ended,
                                          gio::FailureReason& failure) {
  gio::ErrorSlot error;
  posix::Pipe progress = posix::make_pipe();
  auto process = progress ? spawn(call, std::move(progress.writing), bounds, error) : nullptr;
  if (!process) {
    failure = "quoll-share could not be started: " +
              (progress ? error.message() : posix::error_words(errno));
    return nullptr;
  }
  auto share = std::make_shared<ShareProcess>(std::move(process), std::move(progress.reading),
                                              bounds.time, std::move(ended));
  share->begin();
  return share;
}

}  // namespace quoll::share_service
