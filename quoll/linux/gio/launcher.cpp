#include "quoll/linux/gio/launcher.h"

#include <gio/gio.h>
#include <glib-unix.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <utility>

#include "quoll/linux/gio/fields.h"
#include "quoll/linux/gio/forked_process.h"
#include "quoll/linux/gio/left_out.h"
#include "quoll/linux/gio/opener.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/subprocess.h"
#include "quoll/platform/log.h"

namespace quoll::gio {
namespace {

using std::chrono::milliseconds;

constexpr const char* kTaken = "taken";
constexpr const char* kNotTaken = "not taken";

/// The program's side. It sends one request at a time and waits for the answer.
class Launcher final : public LauncherWorkspace {
 public:
  Launcher(pid_t process, posix::UniqueFd socket, milliseconds time_out)
      : process_(process), socket_(std::move(socket)), time_out_(time_out) {}
  ~Launcher() override {
    socket_.reset();
    if (process_ > 0) {
      posix::reap(process_);
    }
  }

  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                std::string_view application, platform::NSWorkspaceLaunchOptions options) override {
    OpenRequest request{.application = std::string(application),
                        .background = (options & platform::NSWorkspaceLaunchWithoutActivation) != 0,
                        .urls = {}};
    for (const auto& url : urls) {
      request.urls.push_back(url ? url->absoluteString() : std::string());
    }
    const OpenResult result = ask(request);
    if (result.failure) {
      log_failure(result);
    }
    return !result.failure;
  }

  [[nodiscard]] std::vector<LeftOut> left_out() const override {
    const std::lock_guard lock(mutex_);
    return left_out_of(report_);
  }

  [[nodiscard]] std::string draft() const override {
    const std::lock_guard lock(mutex_);
    return draft_in(report_);
  }

 private:
  OpenResult ask(const OpenRequest& request) {
    const std::lock_guard lock(mutex_);
    report_.clear();
    if (auto refused = refusal(request)) {
      return *refused;
    }
    if (process_ < 0) {
      return {"the launcher could not be started"};
    }
    if (!send_fields(socket_.get(), request.fields())) {
      return {"the launcher has ended"};
    }
    tell_of_waiting();
    auto answer = receive_fields(socket_.get());
    if (!answer || answer->size() != 4) {
      return {"the launcher has ended"};
    }
    if (answer->front() != kTaken) {
      return {std::move((*answer)[1]), std::move((*answer)[2]), std::move((*answer)[3])};
    }
    report_ = std::move((*answer)[2]);
    return {};
  }

  /// Returns when the launcher has answered, or somebody at a terminal knows what is waited for.
  void tell_of_waiting() const {
    constexpr milliseconds kPatience{2000};
    const auto enough = std::chrono::steady_clock::now() + kPatience;
    if (isatty(STDERR_FILENO) == 1 && !posix::wait_until_readable(socket_.get(), enough)) {
      static_cast<void>(posix::write_all(
          STDERR_FILENO,
          "\r\033[Kwaiting for the mail application (it has " + duration_text(time_out_) + ")\n"));
    }
  }

  /// The application's own words may hold names, so the text of the event goes without them.
  static void log_failure(const OpenResult& result) {
    const std::string words = result.report.empty() ? "" : ": " + result.report;
    auto error = foundation::quoll_error(foundation::kNotOpenedError, *result.failure + words);
    std::string text = "openURLs " + *result.failure;
    if (!result.advice.empty()) {
      text += "; " + result.advice;
      error.user_info.emplace_back(kAdviceKey, result.advice);
    }
    platform::log_event({std::move(text), std::move(error)});
  }

  mutable std::mutex mutex_;
  pid_t process_;
  posix::UniqueFd socket_;
  milliseconds time_out_;
  std::string report_;  ///< as the application said it
};

// Does not load the desktop's GIO modules (for remote files, above all), since only local files and
// the bus are needed. Programs that are started later must not inherit this.
void load_no_modules() {
  constexpr const char* kWhere = "GIO_MODULE_DIR";
  if (std::getenv(kWhere) == nullptr) {
    setenv(kWhere, "/dev/null", 1);
    g_vfs_get_default();
    unsetenv(kWhere);
  }
}

// Waits for a request. The connection to the bus is made meanwhile.
void wait_for_input(int socket) {
  bool readable = false;
  const guint watch = g_unix_fd_add(
      socket, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
      [](int, GIOCondition, gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_CONTINUE;
      },
      &readable);
  while (!readable) {
    g_main_context_iteration(nullptr, TRUE);
  }
  g_source_remove(watch);
}

// Checked in this process too: an attacker may have taken over the program that asks.
FailureReason not_openable(const OpenRequest& request, const Openable& openable) {
  if (std::ranges::find(openable.applications, request.application) ==
      openable.applications.end()) {
    return "\"" + request.application + "\" is not the mail application";
  }
  const bool all_known = std::ranges::all_of(
      request.urls, [&](const std::string& url) { return url.starts_with(openable.urls); });
  if (!all_known) {
    return "a URL does not begin with " + openable.urls;
  }
  return request.urls.size() > openable.most_urls ? FailureReason("it has been asked too often")
                                                  : std::nullopt;
}

void serve(int socket, ActivationTokens tokens, Openable openable, milliseconds time_out) {
  load_no_modules();
  Opener opener(std::move(tokens), time_out);
  for (;;) {
    wait_for_input(socket);
    auto fields = receive_fields(socket);
    const auto request = fields ? OpenRequest::from_fields(std::move(*fields)) : std::nullopt;
    if (!request) {
      break;
    }
    OpenResult result{.failure = not_openable(*request, openable)};
    if (!result.failure) {
      openable.most_urls -= request->urls.size();
      result = opener.open(*request);
    }
    if (!send_fields(socket, {result.failure ? kNotTaken : kTaken, result.failure.value_or(""),
                              std::move(result.report), std::move(result.advice)})) {
      break;
    }
  }
}

}  // namespace

std::shared_ptr<LauncherWorkspace> start_launcher(Openable openable, milliseconds time_out) {
  ActivationTokens tokens = take_activation_tokens();
  ForkedProcess process = fork_process(
      [&](int socket) { serve(socket, std::move(tokens), std::move(openable), time_out); });
  return std::make_shared<Launcher>(process.id, std::move(process.socket), time_out);
}

}  // namespace quoll::gio
