#include "quoll/linux/posix/subprocess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::posix {

namespace {

using Clock = std::chrono::steady_clock;

class SpawnActions {
 public:
  /// The standard streams of the program.
  SpawnActions(int input, int output, int errors) {
    posix_spawn_file_actions_init(&actions_);
    set(STDIN_FILENO, input);
    set(STDOUT_FILENO, output);
    set(STDERR_FILENO, errors);
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
  }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  ~SpawnActions() { posix_spawn_file_actions_destroy(&actions_); }

  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  void set(int number, int descriptor) {
    if (descriptor < 0) {
      posix_spawn_file_actions_addopen(&actions_, number, "/dev/null", O_RDWR, 0);
    } else {
      posix_spawn_file_actions_adddup2(&actions_, descriptor, number);
    }
  }

  posix_spawn_file_actions_t actions_;
};

/// No signal blocked or ignored, whatever the calling program does with its own.
class SpawnAttributes {
 public:
  explicit SpawnAttributes(bool leads_group) {
    posix_spawnattr_init(&attributes_);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes_, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes_, &signals);
    constexpr int kSignals = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    posix_spawnattr_setflags(
        &attributes_,
        static_cast<short>(leads_group ? kSignals | POSIX_SPAWN_SETPGROUP : kSignals));
  }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }

  [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

}  // namespace

std::optional<int> reap(pid_t process) {
  int status = 0;
  return uninterrupted([&] { return waitpid(process, &status, 0); }) == process
             ? std::optional(status)
             : std::nullopt;
}

int wait_for_end(pid_t process, Clock::time_point deadline) {
  const UniqueFd watched(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  return watched && wait_until_readable(watched.get(), deadline) ? 0 : errno;
}

Subprocess::Subprocess(const Command& command) : leads_group_(command.leads_group) {
  Pipe errors = make_pipe();
  if (!errors) {
    start_error_ = errno;
    return;
  }
  // Who writes too much is kept waiting; who reads does not wait.
  fcntl(errors.reading.get(), F_SETFL, O_NONBLOCK);
  std::vector<char*> words;
  words.reserve(command.words.size() + 1);
  for (const std::string& word : command.words) {
    words.push_back(const_cast<char*>(word.c_str()));
  }
  words.push_back(nullptr);
  const SpawnActions actions(command.input, command.output, errors.writing.get());
  const SpawnAttributes attributes(command.leads_group);
  start_error_ =
      posix_spawnp(&process_, words[0], actions.get(), attributes.get(), words.data(), environ);
  errors_ = std::move(errors.reading);
}

Subprocess::~Subprocess() {
  if (start_error_ == 0 && process_ > 0) {
    end_by(Clock::now());
  }
}

int Subprocess::end_by(Clock::time_point deadline, const std::function<bool()>& go_on) {
  constexpr std::chrono::milliseconds kStep{100};
  const auto step_end = [&] { return go_on ? std::min(Clock::now() + kStep, deadline) : deadline; };
  int trouble = wait_for_end(process_, step_end());
  while (trouble == ETIMEDOUT && go_on && Clock::now() < deadline) {
    trouble = go_on() ? wait_for_end(process_, step_end()) : ECANCELED;
  }
  if (leads_group_) {
    kill(-process_, SIGKILL);  // one of its children may be the one that waits
  } else if (trouble != 0) {
    kill(process_, SIGKILL);
  }
  status_ = reap(std::exchange(process_, -1));
  return trouble;
}

bool Subprocess::ended_well() const {
  return !status_ || (WIFEXITED(*status_) && WEXITSTATUS(*status_) == 0);
}

std::string Subprocess::errors(std::size_t most) const {
  std::string text(most, '\0');
  const ssize_t size = read(errors_.get(), text.data(), text.size());
  text.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return text;
}

std::string Subprocess::complaint() const {
  constexpr std::size_t kMost = 512;
  const std::string text = errors(kMost);
  return text.substr(0, text.find('\n'));
}

ProgramAnswer run_program(const std::vector<std::string>& command, std::size_t most,
                          std::chrono::milliseconds read_timeout, Clock::time_point deadline) {
  constexpr std::size_t kLongestComplaint = 200;
  ProgramAnswer answer;
  Pipe output = make_pipe();
  if (!output) {
    answer.end = ProgramAnswer::End::kBadly;
    answer.complaint = error_words(errno);
    return answer;
  }
  Subprocess process({.words = command, .output = output.writing.get(), .leads_group = true});
  output.writing.reset();
  if (process.start_error() != 0) {
    return answer;
  }
  bool ended = false;
  const bool is_read =
      read_until(output.reading.get(), answer.output, most + 1, ended, read_timeout, deadline);
  // It may close its output and stay.
  const int trouble =
      process.end_by(ended ? std::min(Clock::now() + read_timeout, deadline) : Clock::now());
  answer.complaint = foundation::printable(process.complaint(), kLongestComplaint);
  if (!is_read || (ended && trouble == ETIMEDOUT)) {
    answer.end = ProgramAnswer::End::kSilent;
  } else if (!ended) {
    answer.end = ProgramAnswer::End::kTooLong;
  } else {
    answer.end = process.ended_well() ? ProgramAnswer::End::kWell : ProgramAnswer::End::kBadly;
  }
  return answer;
}

}  // namespace quoll::posix
