#include "apps/share/notify.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/share/identifier.h"
#include "apps/share/notice.h"
#include "apps/share/share_watch.h"
#include "apps/share/staging_lock.h"
#include "quoll/linux/gio/notification.h"
#include "quoll/linux/gio/session_bus.h"
#include "quoll/linux/gio/source.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/subprocess.h"

namespace quoll::share {

namespace {

constexpr int kSignalled = 128;

int wait_for(pid_t process) {
  const int status = posix::reap(process).value_or(0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

void write_to(int descriptor, const std::string& told) {
  static_cast<void>(posix::write_all(descriptor, told));
}

void show(const Notice& notice) {
  constexpr std::chrono::milliseconds kTimeOut{5000};
  gio::show_notification(kIdentifier, notice.title, notice.body, kTimeOut);
}

/// The share, for the process that has started it.
class NotedShare {
 public:
  NotedShare(pid_t process, posix::UniqueFd told, posix::UniqueFd progress)
      : process_(process),
        told_pipe_(std::move(told)),
        reading_(gio::Source::readable(told_pipe_.get(), [this] { return read(); })),
        watch_(std::in_place, std::move(progress)) {
    watch_->offer_cancelling([this] { return bus(); });
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
      signals_.push_back(gio::Source::signal(number, [this, number] {
        signal_ = number;
        kill(process_, number);
      }));
    }
  }
  ~NotedShare() {
    watch_.reset();
    if (session_) {
      session_->flush();
    }
  }
  NotedShare(const NotedShare&) = delete;
  NotedShare& operator=(const NotedShare&) = delete;

  /// Answers its exit code when it has ended.
  int wait() {
    while (!is_told_) {
      gio::run_main_context_until(Clock::now() + std::chrono::hours(1),
                                  [this] { return is_told_; });
    }
    write_to(STDERR_FILENO, told_);
    const int code = wait_for(process_);
    if (signal_ != 0) {
      signal(signal_, SIG_DFL);
      raise(signal_);
    }
    if (code != 0 && !watch_->is_cancelled()) {
      show(notice_of(code, told_));
    }
    return code;
  }

 private:
  using Clock = std::chrono::steady_clock;

  GDBusConnection* bus() {
    using namespace std::chrono_literals;
    if (!session_) {
      session_ = std::make_unique<gio::SessionBus>();
    }
    return session_->connection(Clock::now() + 1s);
  }

  bool read() {
    std::array<char, 4096> block{};
    const ssize_t size = ::read(told_pipe_.get(), block.data(), block.size());
    if (size <= 0) {
      is_told_ = true;
      return false;
    }
    told_.append(block.data(), static_cast<std::size_t>(size));
    show_waiting();
    return true;
  }

  /// A line that tells of waiting is shown and is no result.
  void show_waiting() {
    if (told_.starts_with(kWaiting) && told_.ends_with('\n')) {
      write_to(STDERR_FILENO, told_);
      told_.pop_back();
      show(notice_of_waiting(std::exchange(told_, {})));
    }
  }

  pid_t process_;
  posix::UniqueFd told_pipe_;
  gio::Source reading_;
  std::vector<gio::Source> signals_;
  std::unique_ptr<gio::SessionBus> session_;
  std::optional<ShareWatch> watch_;
  std::string told_;
  bool is_told_ = false;
  int signal_ = 0;
};

}  // namespace

int share_and_notify(const std::function<int(const Tell& tell, int pipe)>& share) {
  posix::Pipe told = posix::make_pipe();
  posix::Pipe progress = posix::make_pipe();
  const pid_t program = getpid();
  const pid_t process = told && progress ? fork() : -1;
  if (process < 0) {
    // Then nothing is shown on the desktop.
    return share([](const std::string& text) { write_to(STDERR_FILENO, text); }, -1);
  }
  if (process == 0) {
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != program) {
      _exit(kSignalled + SIGKILL);
    }
    told.reading.reset();
    progress.reading.reset();
    std::exit(share([&](const std::string& text) { write_to(told.writing.get(), text); },
                    progress.writing.get()));
  }
  told.writing.reset();
  progress.writing.reset();
  return NotedShare(process, std::move(told.reading), std::move(progress.reading)).wait();
}

}  // namespace quoll::share
