#include "tests/integration/process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace quoll::test {
namespace {

std::vector<std::string> environment_with(const Environment& changes) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (!changes.contains(text.substr(0, text.find('=')))) {
      variables.push_back(text);
    }
  }
  for (const auto& [name, value] : changes) {
    if (value) {
      variables.push_back(name + "=" + *value);
    }
  }
  return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (auto& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

void set(const std::string& name, const std::optional<std::string>& value) {
  if (value) {
    setenv(name.c_str(), value->c_str(), 1);
  } else {
    unsetenv(name.c_str());
  }
}

}  // namespace

Process::Process(const std::vector<std::string>& command, const Environment& changes)
    : errors_(memfd_create("errors", MFD_CLOEXEC)) {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  output_.reset(ends[0]);
  const posix::UniqueFd input_end(ends[1]);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, input_end.get(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errors_.get(), STDERR_FILENO);
  // A shell lets what it starts in the background ignore some of them, and so would this program.
  sigset_t asked;
  sigemptyset(&asked);
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    sigaddset(&asked, signal);
  }
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigdefault(&attributes, &asked);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  auto arguments = command;
  auto variables = environment_with(changes);
  const int failed = posix_spawnp(&id_, command.front().c_str(), &actions, &attributes,
                                  pointers(arguments).data(), pointers(variables).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) {
    throw std::runtime_error("cannot start " + command.front());
  }
}

Process::~Process() {
  if (id_ > 0) {
    kill(id_, SIGKILL);
    wait();
  }
}

std::string Process::read_line() {
  std::string line;
  char c = '\0';
  while (read(output_.get(), &c, 1) == 1 && c != '\n') {
    line += c;
  }
  return line;
}

std::string Process::read_output() {
  std::string output;
  char buffer[4096];
  for (ssize_t size = 0; (size = read(output_.get(), buffer, sizeof(buffer))) > 0;) {
    output.append(buffer, static_cast<std::size_t>(size));
  }
  return output;
}

std::string Process::errors() const {
  std::string text(static_cast<std::size_t>(lseek(errors_.get(), 0, SEEK_END)), '\0');
  const ssize_t size = pread(errors_.get(), text.data(), text.size(), 0);
  text.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  return text;
}

int Process::wait() {
  int status = 0;
  while (waitpid(id_, &status, 0) < 0 && errno == EINTR) {
  }
  id_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

Ended run(const std::vector<std::string>& command, const Environment& changes) {
  Process process(command, changes);
  Ended ended;
  ended.output = process.read_output();
  ended.status = process.wait();
  ended.errors = process.errors();
  return ended;
}

ScopedEnvironment::ScopedEnvironment(const Environment& changes) {
  for (const auto& [name, value] : changes) {
    const char* before = std::getenv(name.c_str());
    before_[name] = before != nullptr ? std::optional<std::string>(before) : std::nullopt;
    set(name, value);
  }
}

ScopedEnvironment::~ScopedEnvironment() {
  for (const auto& [name, value] : before_) {
    set(name, value);
  }
}

}  // namespace quoll::test
