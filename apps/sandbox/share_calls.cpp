#include "apps/sandbox/share_calls.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "apps/sandbox/call_filter.h"
#include "apps/sandbox/sanitizer_build.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::sandbox {

namespace {

/// A flag of Linux 6.3 for a memory file: its content can never be started as a program.
constexpr unsigned kNotExecutable = 8;

/// Calls for files. The path rules say which files.
void allow_files(CallFilter& filter) {
  filter.allow({"open", "openat", "close", "close_range", "dup", "dup2", "dup3", "pipe", "pipe2"});
  filter.allow({"read", "readv", "pread64", "write", "writev", "pwrite64", "lseek", "ftruncate",
                "copy_file_range", "fadvise64", "flock", "poll", "ppoll"});
  filter.allow({"stat", "lstat", "fstat", "newfstatat", "statx", "fstatfs", "access", "faccessat",
                "faccessat2", "getdents64", "getcwd", "umask"});
  filter.allow(
      {"rename", "renameat", "renameat2", "unlink", "unlinkat", "mkdir", "mkdirat", "rmdir"});
  // As a file without a name gets one. Symbolic links are neither made nor read.
  filter.allow("linkat", {is(0, static_cast<std::uint32_t>(AT_FDCWD)), is(4, AT_SYMLINK_FOLLOW)});
  for (const int command :
       {F_DUPFD, F_DUPFD_CLOEXEC, F_GETFD, F_SETFD, F_GETFL, F_SETFL, F_ADD_SEALS, F_GET_SEALS}) {
    filter.allow("fcntl", {is(1, static_cast<std::uint32_t>(command))});
  }
  for (const std::uint32_t command :
       {std::uint32_t{TCGETS}, std::uint32_t{TIOCGWINSZ}, static_cast<std::uint32_t>(FICLONE)}) {
    filter.allow("ioctl", {is(1, command)});
  }
}

/// Calls that the path rules do not cover: allowed only through a descriptor, so only for files
/// that could be opened. Never for owners.
void allow_attributes(CallFilter& filter) {
  filter.allow({"fchmod", "flistxattr", "fgetxattr", "fsetxattr"});
  filter.allow("utimensat", {is_null(1)});
}

void allow_memory(CallFilter& filter) {
  filter.allow({"mmap", "munmap", "mremap", "mprotect", "madvise", "brk"});
  const posix::UniqueFd probe(::memfd_create("probe", MFD_CLOEXEC | kNotExecutable));
  filter.allow("memfd_create", {has_all_of(1, probe ? kNotExecutable : 0)});
}

/// Calls for threads and for starting the image helper, without new namespaces. `clone3` is not
/// allowed, because a filter cannot see its flags; the C library then uses `clone`.
void allow_processes(CallFilter& filter) {
  constexpr std::uint32_t kNamespaces = CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS |
                                        CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;
  filter.allow("clone", {has_none_of(0, kNamespaces)});
  filter.allow({"fork", "vfork", "execve", "exit", "exit_group", "wait4", "waitid", "pidfd_open"});
  filter.allow({"kill", "tgkill", "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "sigaltstack"});
  filter.allow({"futex", "set_robust_list", "set_tid_address", "rseq", "arch_prctl", "membarrier",
                "sched_yield", "sched_getaffinity", "getcpu"});
  filter.allow({"getpid", "getppid", "gettid", "getuid", "geteuid", "getgid", "getegid"});
  for (const int option : {PR_SET_PDEATHSIG, PR_SET_NAME, PR_SET_NO_NEW_PRIVS}) {
    filter.allow("prctl", {is(0, static_cast<std::uint32_t>(option))});
  }
  // For the calling process only.
  filter.allow("prlimit64", {is(0, 0)});
  filter.allow("setpriority", {is(0, PRIO_PROCESS), is(1, 0)});
  filter.allow({"getrlimit", "setrlimit", "getrusage", "getpriority"});
  // A program that is started may confine itself further.
  filter.allow(
      {"seccomp", "landlock_create_ruleset", "landlock_add_rule", "landlock_restrict_self"});
}

void allow_time_and_machine(CallFilter& filter) {
  filter.allow({"clock_gettime", "clock_getres", "clock_nanosleep", "nanosleep", "gettimeofday",
                "time", "restart_syscall", "uname", "sysinfo", "getrandom"});
}

/// Calls for the launcher and the system log, whose sockets are connected already. Nothing can be
/// sent to an address, no descriptor can be sent, and no socket can be made.
void allow_open_sockets(CallFilter& filter) {
  filter.allow("sendto", {is_null(4)});
  filter.allow({"recvfrom"});
}

}  // namespace

int enforce_share_calls() {
  CallFilter filter;
  allow_files(filter);
  allow_attributes(filter);
  allow_memory(filter);
  allow_processes(filter);
  allow_time_and_machine(filter);
  allow_open_sockets(filter);
  if (kSanitizerBuild) {  // it stops the threads to look at memory, and restarts the program
    filter.allow({"ptrace", "personality", "prctl", "mincore", "getdents", "socketpair", "readlink",
                  "readlinkat"});
  }
  return filter.enforce();
}

}  // namespace quoll::sandbox
