#include "apps/compose/confine_writer.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>

#include "apps/sandbox/path_rules.h"
#include "apps/sandbox/sanitizer_build.h"

namespace quoll::compose {
namespace {

using sandbox::kSanitizerBuild;
using sandbox::PathRules;

void limit(__rlimit_resource resource, rlim_t most, rlim_t more = 0) {
  const rlimit both{most, most + more};
  setrlimit(resource, &both);
}

/// The address space that this process has already, in bytes.
rlim_t mapped() {
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

void limit_memory() {
  constexpr rlim_t kMemory = rlim_t{1536} << 20;
  if (!kSanitizerBuild) {
    limit(RLIMIT_AS, mapped() + kMemory);
  }
}

void limit_time(std::uint64_t file_bytes) {
  constexpr rlim_t kSeconds = 60;
  constexpr rlim_t kBytesOfASecond = 10'000'000;
  limit(RLIMIT_CPU, kSeconds + file_bytes / kBytesOfASecond, 1);
}

// Base64 makes 78 bytes of 57. Headers, bodies and what is told of them have less than a gibibyte.
/// True when the user's own limit is lower, which then stays.
bool limit_files(std::uint64_t file_bytes) {
  constexpr rlim_t kAllElse = rlim_t{1} << 30;
  constexpr std::uint64_t kLargest = std::uint64_t{1} << 62;
  const rlim_t most = kAllElse + std::min(file_bytes, kLargest) / 2 * 3;
  rlimit users{};
  const bool is_users = getrlimit(RLIMIT_FSIZE, &users) == 0 && users.rlim_cur < most;
  if (!is_users) {
    limit(RLIMIT_FSIZE, most);
  }
  signal(SIGXFSZ, SIG_IGN);  // write() reports what does not fit
  return is_users;
}

void leave_one_folder(int folder) {
  PathRules rules;
  rules.allow(folder, PathRules::Access::kRead);
  if (kSanitizerBuild) {
    rules.allow("/proc/self", PathRules::Access::kRead);
  }
  (void)!rules.enforce();
}

}  // namespace

WriterConfinement::WriterConfinement() {
  using sandbox::has_all_of;
  using sandbox::has_none_of;
  using sandbox::is;
  calls_.allow({"read", "pread64", "write", "writev", "lseek", "close", "fstat", "newfstatat",
                "statx", "getdents64"});
  calls_.allow("openat", {has_none_of(2, O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)});
  for (const int command : {F_GETFD, F_SETFD, F_GETFL}) {
    calls_.allow("fcntl", {is(1, static_cast<std::uint32_t>(command))});
  }
  calls_.allow({"brk", "munmap", "mremap", "madvise", "sysinfo", "getrandom"});
  // No executable memory, and no mapping of files.
  calls_.allow("mmap", {has_none_of(2, PROT_EXEC), has_all_of(3, MAP_ANONYMOUS)});
  calls_.allow("mprotect", {has_none_of(2, PROT_EXEC)});
  calls_.allow({"exit", "exit_group", "getpid", "gettid", "rt_sigaction", "rt_sigprocmask",
                "rt_sigreturn", "futex", "sched_yield", "clock_gettime", "gettimeofday"});
  if (kSanitizerBuild) {  // it reads /proc/self and stops the threads to look at memory
    calls_.allow({"open",      "openat",          "readlink",  "readlinkat", "mmap",
                  "mprotect",  "mincore",         "clone",     "wait4",      "ptrace",
                  "prctl",     "sigaltstack",     "prlimit64", "getppid",    "tgkill",
                  "nanosleep", "clock_nanosleep", "pipe",      "pipe2",      "getdents"});
  }
}

void WriterConfinement::enforce(int taken_folder, std::uint64_t file_bytes) {
  is_file_limit_users_ = limit_files(file_bytes);
  enforce_reading(taken_folder, file_bytes);
}

void WriterConfinement::enforce_reading(int folder, std::uint64_t file_bytes) {
  limit(RLIMIT_CORE, 0);
  limit_memory();
  limit_time(file_bytes);
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  leave_one_folder(folder);
  (void)!calls_.enforce();
}

void end_with(int parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {  // it ended before that call
    std::_Exit(EXIT_FAILURE);
  }
}

}  // namespace quoll::compose
