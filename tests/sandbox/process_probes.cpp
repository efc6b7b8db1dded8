#include <fcntl.h>
#include <linux/kcmp.h>
#include <sched.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "tests/sandbox/probe_table.h"

namespace quoll::test {
namespace {

pid_t victim() {
  return std::atoi(setting("QUOLL_PROBE_VICTIM").c_str());
}

bool starts(const std::string& program) {
  std::string name = program;
  char* const arguments[] = {name.data(), nullptr};
  pid_t process = -1;
  errno = posix_spawn(&process, program.c_str(), nullptr, nullptr, arguments, environ);
  int status = 0;
  return errno == 0 && waitpid(process, &status, 0) == process && WIFEXITED(status) &&
         WEXITSTATUS(status) == 0;
}

bool fill_with_a_program(int to) {
  const int from = open("/bin/true", O_RDONLY | O_CLOEXEC);
  char buffer[4096];
  ssize_t got = 0;
  while ((got = read(from, buffer, sizeof buffer)) > 0) {
    if (syscall(SYS_write, to, buffer, got) != got) {
      return false;
    }
  }
  return got == 0;
}

bool starts_from_memory() {
  constexpr unsigned kNotExecutable = 8;
  int file = memfd_create("program", 0);
  if (file < 0) {
    file = memfd_create("program", kNotExecutable);
  }
  return file >= 0 && fill_with_a_program(file) && starts("/proc/self/fd/" + std::to_string(file));
}

bool starts_from_the_group() {
  const std::string path = setting("QUOLL_PROBE_GROUP") + "/program";
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0700);
  if (file < 0 || !fill_with_a_program(file) || fchmod(file, 0700) != 0) {
    return false;
  }
  close(file);
  return starts(path);
}

bool starts_by_descriptor() {
  const int program = open("/bin/true", O_RDONLY | O_CLOEXEC);
  char* const arguments[] = {nullptr};
  const long child = syscall(SYS_clone, SIGCHLD, nullptr, nullptr, nullptr, nullptr);
  if (child == 0) {
    syscall(SYS_execveat, program, "", arguments, environ, AT_EMPTY_PATH);
    _exit(errno);
  }
  int status = 0;
  if (child < 0 || waitpid(static_cast<pid_t>(child), &status, 0) != child) {
    return false;
  }
  errno = WEXITSTATUS(status);
  return errno == 0;
}

bool traces() {
  if (ptrace(PTRACE_SEIZE, victim(), nullptr, nullptr) != 0) {
    return false;
  }
  ptrace(PTRACE_INTERRUPT, victim(), nullptr, nullptr);
  waitpid(victim(), nullptr, __WALL);
  return ptrace(PTRACE_DETACH, victim(), nullptr, nullptr) == 0;
}

bool reads_memory() {
  char here = 0;
  const iovec into{&here, 1};
  const iovec from{&here, 1};
  // No such address there is an answer that only who may look gets.
  return process_vm_readv(victim(), &into, 1, &from, 1, 0) == 1 || errno == EFAULT;
}

bool takes_a_descriptor() {
  const long process = syscall(SYS_pidfd_open, victim(), 0);
  return process >= 0 && syscall(SYS_pidfd_getfd, process, 0, 0) >= 0;
}

bool limits_another() {
  rlimit now{};
  return prlimit(victim(), RLIMIT_NOFILE, nullptr, &now) == 0;
}

bool binds_another() {
  cpu_set_t all;
  return sched_getaffinity(victim(), sizeof all, &all) == 0 &&
         sched_setaffinity(victim(), sizeof all, &all) == 0;
}

bool forks() {
  const pid_t child = fork();
  if (child == 0) {
    _exit(0);
  }
  return child > 0 && waitpid(child, nullptr, 0) == child;
}

constexpr Probe kProbes[] = {
    {"start a program", [] { return starts("/bin/true"); }},
    {"start a program by descriptor", starts_by_descriptor},
    {"start a program from memory", starts_from_memory},
    {"start a program from the group", starts_from_the_group},
    {"start a process", forks},
    {"trace a process", traces},
    {"read a process's memory", reads_memory},
    {"take a process's descriptor", takes_a_descriptor},
    {"compare processes", [] { return syscall(SYS_kcmp, getpid(), victim(), KCMP_VM, 0, 0) >= 0; }},
    {"signal a process", [] { return kill(victim(), SIGCONT) == 0; }},
    {"signal a thread", [] { return syscall(SYS_tgkill, victim(), victim(), SIGCONT) == 0; }},
    {"signal by descriptor",
     [] {
       const long process = syscall(SYS_pidfd_open, victim(), 0);
       return process >= 0 && syscall(SYS_pidfd_send_signal, process, SIGCONT, nullptr, 0) == 0;
     }},
    {"slow a process down", [] { return setpriority(PRIO_PROCESS, victim(), 1) == 0; }},
    {"limit a process", limits_another},
    {"bind a process to processors", binds_another},
};

}  // namespace

std::span<const Probe> process_probes() {
  return kProbes;
}

}  // namespace quoll::test
