#include "tests/crash/errors_of_calls.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/futex.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <sstream>

namespace quoll::crash {

namespace {

constexpr unsigned kEio = 1U;
constexpr unsigned kEnospc = 2U;
constexpr unsigned kEmfile = 4U;
constexpr unsigned kEnomem = 8U;
constexpr unsigned kEintr = 16U;
constexpr unsigned kEnolck = 32U;  // what flock answers where others say ENOMEM

struct Error {
  unsigned bit;
  int number;
  const char* name;
};
constexpr std::array<Error, 6> kErrors{{{kEio, EIO, "EIO"},
                                        {kEnospc, ENOSPC, "ENOSPC"},
                                        {kEmfile, EMFILE, "EMFILE"},
                                        {kEnomem, ENOMEM, "ENOMEM"},
                                        {kEintr, EINTR, "EINTR"},
                                        {kEnolck, ENOLCK, "ENOLCK"}}};

constexpr int kNoCount = -1;

struct Entry {
  long number;
  const char* name;
  unsigned errors;
  /// The argument that says how much is wanted.
  int count = kNoCount;
  bool changes = false;
};

#define CALL(name) SYS_##name, #name
// The errors are those of the manual pages. A call that changes a file's entry or bytes can be the
// one that meets a bad disk.
constexpr Entry kCalls[] = {
    {CALL(read), kEio | kEintr, 2},
    {CALL(pread64), kEio | kEintr, 2},
    {CALL(write), kEio | kEnospc | kEintr, 2},
    {CALL(pwrite64), kEio | kEnospc | kEintr, 2, true},
    {CALL(readv), kEio | kEintr, 2},
    {CALL(writev), kEio | kEnospc | kEintr, 2},
    {CALL(sendto), kEnomem | kEintr, 2},
    {CALL(recvfrom), kEnomem | kEintr, 2},
    {CALL(sendmsg), kEnomem | kEintr},
    {CALL(recvmsg), kEnomem | kEintr},
    {CALL(copy_file_range), kEio | kEnospc | kEnomem | kEintr, 4, true},
    {CALL(openat), kEio | kEnospc | kEmfile | kEnomem | kEintr},
    {CALL(close), kEio | kEnospc | kEintr},
    {CALL(newfstatat), kEio | kEnomem},
    {CALL(fstat), kEio | kEnomem},
    {CALL(statx), kEio | kEnomem},
    {CALL(statfs), kEio | kEnomem | kEintr},
    {CALL(fstatfs), kEio | kEnomem | kEintr},
    {CALL(faccessat), kEio | kEnomem},
    {CALL(readlinkat), kEio | kEnomem},
    {CALL(getdents64), kEio | kEnomem},
    {CALL(getcwd), kEnomem},
    {CALL(mkdirat), kEio | kEnospc | kEnomem},
    {CALL(linkat), kEio | kEnospc | kEnomem, kNoCount, true},
    {CALL(symlinkat), kEio | kEnospc | kEnomem},
    {CALL(unlinkat), kEio | kEnomem, kNoCount, true},
    {CALL(renameat), kEio | kEnospc | kEnomem, kNoCount, true},
    {CALL(renameat2), kEio | kEnospc | kEnomem, kNoCount, true},
    {CALL(ftruncate), kEio | kEintr, kNoCount, true},
    {CALL(fallocate), kEio | kEnospc | kEintr, kNoCount, true},
    {CALL(fchmod), kEio, kNoCount, true},
    {CALL(fchmodat), kEio | kEnomem, kNoCount, true},
    {CALL(utimensat), kEio | kEnomem, kNoCount, true},
    {CALL(flistxattr), kEio | kEnomem},
    {CALL(fgetxattr), kEio | kEnomem},
    {CALL(fsetxattr), kEio | kEnospc | kEnomem, kNoCount, true},
    {CALL(flock), kEintr | kEnolck},
    {CALL(fcntl), kEmfile},
    {CALL(dup), kEmfile},
    {CALL(dup3), kEmfile | kEintr},
    {CALL(pipe2), kEmfile | kEnomem},
    {CALL(socket), kEmfile | kEnomem},
    {CALL(socketpair), kEmfile | kEnomem},
    {CALL(connect), kEnomem | kEintr},
    {CALL(eventfd2), kEmfile | kEnomem},
    {CALL(memfd_create), kEmfile | kEnomem},
    {CALL(inotify_init1), kEmfile | kEnomem},
    {CALL(inotify_add_watch), kEnospc | kEnomem},
    {CALL(pidfd_open), kEmfile | kEnomem},
    {CALL(ioctl), kEio},
    {CALL(ppoll), kEnomem | kEintr},
    {CALL(wait4), kEintr},
    {CALL(waitid), kEintr},
    {CALL(clock_nanosleep), kEintr},
    {CALL(nanosleep), kEintr},
    {CALL(futex), kEintr},
    {CALL(getrandom), kEintr},
    {CALL(brk), kEnomem},
    {CALL(mmap), kEnomem},
    {CALL(mremap), kEnomem},
    {CALL(mprotect), kEnomem},
    {CALL(munmap), kEnomem},
    {CALL(madvise), kEnomem},
    {CALL(clone), kEnomem},
    {CALL(clone3), kEnomem},
    {CALL(execve), kEio | kEmfile | kEnomem},
    {CALL(seccomp), kEnomem},
    {CALL(landlock_create_ruleset), kEmfile | kEnomem},
    {CALL(landlock_add_rule), kEnomem},
#if defined(__x86_64__)
    {CALL(open), kEio | kEnospc | kEmfile | kEnomem | kEintr},
    {CALL(stat), kEio | kEnomem},
    {CALL(lstat), kEio | kEnomem},
    {CALL(access), kEio | kEnomem},
    {CALL(readlink), kEio | kEnomem},
    {CALL(mkdir), kEio | kEnospc | kEnomem},
    {CALL(rmdir), kEio | kEnomem},
    {CALL(unlink), kEio | kEnomem, kNoCount, true},
    {CALL(link), kEio | kEnospc | kEnomem, kNoCount, true},
    {CALL(rename), kEio | kEnospc | kEnomem, kNoCount, true},
    {CALL(dup2), kEmfile | kEintr},
    {CALL(poll), kEnomem | kEintr},
    {CALL(fork), kEnomem},
    {CALL(vfork), kEnomem},
#endif
};
#undef CALL

const Entry* find(const Call& call) {
  const auto* const at = std::find_if(std::begin(kCalls), std::end(kCalls),
                                      [&](const Entry& one) { return one.number == call.number; });
  return at == std::end(kCalls) ? nullptr : at;
}

std::uint64_t open_flags(const Call& call) {
#if defined(__x86_64__)
  if (call.number == SYS_open) {
    return call.arguments[1];
  }
#endif
  return call.number == SYS_openat ? call.arguments[2] : 0;
}

bool has(std::uint64_t flags, std::uint64_t wanted) {
  return (flags & wanted) == wanted;
}

/// What of the entry's errors these arguments leave possible.
unsigned possible_errors(const Entry& entry, const Call& call) {
  const bool makes_file = has(open_flags(call), O_CREAT) || has(open_flags(call), O_TMPFILE);
  switch (call.number) {
#if defined(__x86_64__)
    case SYS_open:
#endif
    case SYS_openat:
      return makes_file ? entry.errors : entry.errors & ~kEnospc;
    case SYS_fcntl:
      return call.arguments[1] == F_DUPFD || call.arguments[1] == F_DUPFD_CLOEXEC ? kEmfile : 0;
    case SYS_ioctl:
      return call.arguments[1] == FICLONE ? kEio | kEnospc | kEnomem : entry.errors;
    case SYS_futex: {
      const auto command = static_cast<int>(call.arguments[1]) & FUTEX_CMD_MASK;
      return command == FUTEX_WAIT || command == FUTEX_WAIT_BITSET ? kEintr : 0;
    }
    case SYS_brk:
      return call.arguments[0] != 0 ? kEnomem : 0;
    default:
      return entry.errors;
  }
}

Step failing(const Call& call, int error) {
  switch (call.number) {
    case SYS_close:  // the descriptor is gone whatever it answers
      return {.kind = Step::Kind::kFailAfterwards, .error = error};
    case SYS_brk:  // which fails by answering the end that there was
      return {.kind = Step::Kind::kChangeArgument, .argument = 0, .value = 0};
    default:
      return {.kind = Step::Kind::kFail, .error = error};
  }
}

}  // namespace

std::vector<Fault> faults_of(const Call& call) {
  std::vector<Fault> faults;
  const Entry* const entry = find(call);
  if (entry == nullptr) {
    return faults;
  }
  const unsigned possible = possible_errors(*entry, call);
  for (const Error& error : kErrors) {
    if ((possible & error.bit) != 0) {
      faults.push_back({std::string(entry->name) + " " + error.name, failing(call, error.number)});
    }
  }
  if (entry->count != kNoCount) {
    const auto argument = static_cast<std::size_t>(entry->count);
    const std::uint64_t half = call.arguments[argument] / 2;
    if (half > 0) {
      faults.push_back(
          {std::string(entry->name) + " short",
           {.kind = Step::Kind::kChangeArgument, .argument = argument, .value = half}});
    }
  }
  return faults;
}

std::string name_of_call(const Call& call) {
  const Entry* const entry = find(call);
  return entry != nullptr ? entry->name : "call " + std::to_string(call.number);
}

bool changes_a_file(const Call& call) {
  const Entry* const entry = find(call);
  return entry != nullptr && entry->changes;
}

bool needs_modern_files(const Call& call) {
  return call.number == SYS_copy_file_range || has(open_flags(call), O_TMPFILE) ||
         (call.number == SYS_ioctl && call.arguments[1] == FICLONE);
}

bool is_of_loader(const Call& call) {
  std::ifstream maps("/proc/" + std::to_string(call.process) + "/maps");
  for (std::string line; std::getline(maps, line);) {
    std::istringstream words(line);
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    char dash = 0;
    words >> std::hex >> begin >> dash >> end;
    if (begin <= call.instruction && call.instruction < end) {
      return line.find("/ld-") != std::string::npos;
    }
  }
  return false;
}

}  // namespace quoll::crash
