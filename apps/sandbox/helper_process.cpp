#include "apps/sandbox/helper_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "apps/sandbox/sanitizer_build.h"

// The leak check of the address sanitizer reads the process's threads in /proc. A helper of a
// confined program cannot see them, so the check is turned off there, and only there.
extern "C" int __lsan_is_turned_off();   // NOLINT(bugprone-reserved-identifier): its name
extern "C" int __lsan_is_turned_off() {  // NOLINT(bugprone-reserved-identifier)
  const int threads = open("/proc/self/task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (threads >= 0) {
    close(threads);
  }
  return threads < 0 ? 1 : 0;
}

namespace quoll::sandbox {

void limit(__rlimit_resource resource, rlim_t most) {
  const rlimit both{most, most};
  setrlimit(resource, &both);
}

void end_with_parent() {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  // The parent may have ended before that call: then the other end of standard error is closed.
  pollfd reason{STDERR_FILENO, 0, 0};
  if (poll(&reason, 1, 0) > 0 && (reason.revents & POLLERR) != 0) {
    std::_Exit(EXIT_FAILURE);
  }
}

void allow_running(CallFilter& filter) {
  filter.allow({"brk", "munmap", "mremap", "madvise", "sysinfo", "getrandom"});
  // No executable memory, and no mapping of files.
  filter.allow("mmap", {has_none_of(2, PROT_EXEC), has_all_of(3, MAP_ANONYMOUS)});
  filter.allow("mprotect", {has_none_of(2, PROT_EXEC)});
  filter.allow({"exit", "exit_group", "getpid", "gettid", "rt_sigaction", "rt_sigprocmask",
                "rt_sigreturn", "futex", "sched_yield", "clock_gettime", "gettimeofday"});
  filter.allow("tgkill", {is(0, static_cast<std::uint32_t>(getpid()))});  // for abort()
  if (kSanitizerBuild) {  // it reads /proc/self and stops the threads to look at memory
    filter.allow({"open",       "openat",  "newfstatat", "getdents64",      "readlink",
                  "readlinkat", "mmap",    "mprotect",   "mincore",         "clone",
                  "wait4",      "ptrace",  "prctl",      "sigaltstack",     "prlimit64",
                  "getppid",    "tgkill",  "nanosleep",  "clock_nanosleep", "pipe",
                  "pipe2",      "getdents"});
  }
}

}  // namespace quoll::sandbox
