#include "tests/crash/stepper.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::crash {

namespace {

constexpr int kNotTraced = 126;
constexpr long kOptions = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK |
                          PTRACE_O_TRACEVFORK | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
constexpr int kCallStop = SIGTRAP | 0x80;

volatile std::sig_atomic_t time_is_up = 0;

/// Interrupts the wait for the traced processes when the time is up.
class Alarm {
 public:
  explicit Alarm(unsigned seconds) {
    time_is_up = 0;
    struct sigaction action {};
    action.sa_handler = [](int) { time_is_up = 1; };
    sigaction(SIGALRM, &action, &before_);
    alarm(seconds);
  }
  Alarm(const Alarm&) = delete;
  Alarm& operator=(const Alarm&) = delete;
  ~Alarm() {
    alarm(0);
    sigaction(SIGALRM, &before_, nullptr);
  }

 private:
  struct sigaction before_ {};
};

[[noreturn]] void become(const std::vector<std::string>& command, const test::Environment& changes,
                         int errors) {
  for (const auto& [name, value] : changes) {
    static_cast<void>(value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str()));
  }
  std::vector<char*> arguments;
  for (const std::string& argument : command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  const int nothing = open("/dev/null", O_RDWR);
  dup2(nothing, STDIN_FILENO);
  dup2(nothing, STDOUT_FILENO);
  dup2(errors, STDERR_FILENO);
  closefrom(STDERR_FILENO + 1);
  if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0 || raise(SIGSTOP) != 0) {
    _exit(kNotTraced);
  }
  execvp(arguments[0], arguments.data());
  _exit(kNotTraced);
}

std::string content_of(int file) {
  std::string text(static_cast<std::size_t>(std::max<off_t>(lseek(file, 0, SEEK_END), 0)), '\0');
  const ssize_t size = pread(file, text.data(), text.size(), 0);
  text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return text;
}

pid_t process_of(pid_t thread) {
  std::ifstream status("/proc/" + std::to_string(thread) + "/status");
  for (std::string word; status >> word;) {
    if (word == "Tgid:") {
      pid_t process = -1;
      status >> process;
      return process;
    }
  }
  return thread;
}

std::string name_of(pid_t process) {
  std::error_code gone;
  return std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", gone)
      .filename();
}

class Run {
 public:
  Run(Steps& steps, pid_t program) : steps_(steps), program_(program) { meet(program); }

  /// Until no traced process is left.
  void go(SteppedEnd& end) {
    while (!threads_.empty()) {
      int status = 0;
      const pid_t thread = waitpid(-1, &status, __WALL);
      if (thread < 0 && errno == EINTR) {
        if (time_is_up != 0 && !end.is_hung) {
          end.is_hung = true;
          kill_all();
        }
        continue;
      }
      if (thread < 0) {
        throw std::runtime_error("the traced processes are gone");
      }
      if (WIFSTOPPED(status)) {
        stopped(thread, status);
      } else {
        ended(thread, status, end);
      }
    }
  }

 private:
  struct Process {
    std::string name;
    int number = 0;
    int threads = 0;
  };
  struct Thread {
    pid_t process = -1;
    Lane lane;
    Step step;                 // for a call that is under way
    std::uint64_t before = 0;  // the argument that it changed
  };

  Thread& meet(pid_t thread) {
    const auto [at, is_new] = threads_.try_emplace(thread);
    if (is_new) {
      const pid_t process = process_of(thread);
      const int number = static_cast<int>(processes_.size());
      const auto [one, is_first] = processes_.try_emplace(process, name_of(process), number);
      at->second.process = process;
      at->second.lane = {one->second.number, one->second.threads++};
      if (killing_) {
        kill(process, SIGKILL);
      }
    }
    return at->second;
  }

  /// Meets a new thread before its maker makes the next. Its own stops, and even its end, may have
  /// been reported before its maker tells of it; then nothing is left to meet.
  void meet_made_by(pid_t maker) {
    unsigned long made = 0;
    const bool is_told = ptrace(PTRACE_GETEVENTMSG, maker, nullptr, &made) == 0;
    if (is_told && seen_untold_.erase(static_cast<pid_t>(made)) == 0) {
      meet(static_cast<pid_t>(made));
    }
  }

  void kill_all() {
    killing_ = true;
    for (const auto& [id, thread] : threads_) {
      kill(thread.process, SIGKILL);
    }
  }

  void stopped(pid_t id, int status) {
    if (!threads_.contains(id)) {
      seen_untold_.insert(id);
    }
    Thread& thread = meet(id);
    int signal = WSTOPSIG(status);
    const int event = status >> 16;
    if (signal == kCallStop) {
      at_call(id, thread);
      signal = 0;
    } else if (event == PTRACE_EVENT_EXEC) {
      processes_[thread.process].name = name_of(thread.process);
      is_begun_ = true;  // the call before it was the starter's
      signal = 0;
    } else if (event == PTRACE_EVENT_CLONE || event == PTRACE_EVENT_FORK ||
               event == PTRACE_EVENT_VFORK) {
      meet_made_by(id);
      signal = 0;
    } else if (event != 0 || signal == SIGSTOP) {
      signal = 0;  // SIGSTOP is how a new thread shows itself
    }
    // What is under way is seen to its end.
    const bool freely = steps_.is_done() && thread.step.kind == Step::Kind::kGoOn;
    ptrace(freely ? PTRACE_CONT : PTRACE_SYSCALL, id, nullptr, signal);
  }

  void at_call(pid_t id, Thread& thread) {
    if (auto call = entered_call(id)) {
      call->process = thread.process;
      call->lane = thread.lane;
      if (is_begun_ && !killing_ && !steps_.is_done()) {
        begin(*call, thread, steps_.at(*call));
      }
    } else if (const auto result = ended_call(id)) {
      finish(id, thread, *result);
    }
  }

  void begin(const Call& call, Thread& thread, const Step& step) {
    thread.step = step;
    switch (step.kind) {
      case Step::Kind::kKillAll:
        kill_all();
        break;
      case Step::Kind::kKillOne:
        killed_.insert(call.process);
        kill(call.process, SIGKILL);
        break;
      case Step::Kind::kFail:
        thread.before = call.arguments[0];
        make_void(call.thread);
        break;
      case Step::Kind::kChangeArgument:
        thread.before = call.arguments[step.argument];
        set_argument(call.thread, step.argument, step.value);
        break;
      case Step::Kind::kGoOn:
      case Step::Kind::kFailAfterwards:
        break;
    }
  }

  /// A program finds the arguments of its call as it gave them.
  static void finish(pid_t id, Thread& thread, std::int64_t result) {
    const Step step = std::exchange(thread.step, {});
    if (step.kind == Step::Kind::kFail) {
      set_argument(id, 0, thread.before);
      set_result(id, -step.error);
    } else if (step.kind == Step::Kind::kChangeArgument) {
      set_argument(id, step.argument, thread.before);
      set_result(id, result);
    } else if (step.kind == Step::Kind::kFailAfterwards && result >= 0) {
      set_result(id, -step.error);
    }
  }

  void ended(pid_t id, int status, SteppedEnd& end) {
    const auto at = threads_.find(id);
    if (at == threads_.end()) {
      seen_untold_.insert(id);
      return;
    }
    threads_.erase(at);
    if (id == program_) {
      end.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    const bool is_ours = killing_ || killed_.contains(id);
    const auto process = processes_.find(id);
    if (WIFSIGNALED(status) && !is_ours && process != processes_.end()) {
      const bool is_program = id == program_;
      end.deaths.push_back({(is_program ? "the program " : "its child ") + process->second.name,
                            WTERMSIG(status), is_program});
    }
  }

  Steps& steps_;
  pid_t program_;
  std::map<pid_t, Thread> threads_;
  std::map<pid_t, Process> processes_;
  std::set<pid_t> killed_;
  std::set<pid_t> seen_untold_;  // threads of which their makers have not told yet
  bool is_begun_ = false;
  bool killing_ = false;
};

/// Starts the program and stops it before its first instruction; answers none when it may not be
/// traced.
std::optional<pid_t> start(const std::vector<std::string>& command,
                           const test::Environment& changes, int errors) {
  const pid_t program = fork();
  if (program == 0) {
    become(command, changes, errors);
  }
  int status = 0;
  if (program < 0 || waitpid(program, &status, 0) != program) {
    throw std::runtime_error("no process");
  }
  if (!WIFSTOPPED(status)) {
    return std::nullopt;
  }
  if (ptrace(PTRACE_SETOPTIONS, program, nullptr, kOptions) != 0) {
    kill(program, SIGKILL);
    waitpid(program, nullptr, 0);
    return std::nullopt;
  }
  return program;
}

/// Looks at calls, changes nothing.
class OnlyLook final : public Steps {
 public:
  Step at(const Call& /*call*/) override {
    seen_ = true;
    return {};
  }
  [[nodiscard]] bool is_done() const override { return false; }
  [[nodiscard]] bool has_seen() const { return seen_; }

 private:
  bool seen_ = false;
};

}  // namespace

std::string why_not_stepped() {
  try {
    OnlyLook look;
    const SteppedEnd end = run_stepped({"true"}, {}, look, 0);
    return look.has_seen() && end.status == 0 ? "" : "this kernel does not describe system calls";
  } catch (const std::exception& refused) {
    return refused.what();
  }
}

SteppedEnd run_stepped(const std::vector<std::string>& command, const test::Environment& changes,
                       Steps& steps, unsigned seconds) {
  const posix::UniqueFd errors(memfd_create("errors", MFD_CLOEXEC));
  const auto program = start(command, changes, errors.get());
  if (!program) {
    throw std::runtime_error("processes may not be traced here");
  }
  SteppedEnd end;
  {
    const Alarm alarm(seconds);
    Run run(steps, *program);
    ptrace(steps.is_done() ? PTRACE_CONT : PTRACE_SYSCALL, *program, nullptr, 0);
    run.go(end);
  }
  end.errors = content_of(errors.get());
  return end;
}

}  // namespace quoll::crash
