#include "apps/folder-helper/confine.h"

#include <fcntl.h>
#include <sys/prctl.h>

#include <csignal>

#include "apps/folder-helper/walk.h"
#include "apps/sandbox/call_filter.h"
#include "apps/sandbox/helper_process.h"
#include "apps/sandbox/path_rules.h"
#include "apps/sandbox/sanitizer_build.h"

namespace quoll::folder_helper {

namespace {

using sandbox::kSanitizerBuild;
using sandbox::limit;

/// Gives up files and folders outside of this one, TCP connections, and signals to other processes.
void leave_one_folder(int folder) {
  sandbox::PathRules rules;
  rules.allow(folder, sandbox::PathRules::Access::kRead);
  if (kSanitizerBuild) {
    rules.allow("/proc/self", sandbox::PathRules::Access::kRead);
  }
  (void)!rules.enforce();
}

/// Leaves only the system calls for memory, for reading files and folders, for writing what is open
/// and for the end of the process.
void leave_few_calls() {
  sandbox::CallFilter filter;
  filter.allow({"read", "write", "writev", "lseek", "close", "fstat", "newfstatat", "getdents64"});
  for (const int command : {F_GETFL, F_SETFD}) {  // how a folder is made ready for listing
    filter.allow("fcntl", {sandbox::is(1, static_cast<std::uint32_t>(command))});
  }
  // For reading, and never through a symbolic link.
  constexpr std::uint64_t kFlags = O_ACCMODE | O_CREAT | O_TRUNC | O_NOFOLLOW;
  filter.allow("openat", {sandbox::Argument{2, kFlags, O_NOFOLLOW}});
  allow_running(filter);
  (void)!filter.enforce();
}

}  // namespace

void limit_resources() {
  sandbox::end_with_parent();
  constexpr rlim_t kSeconds = 600;
  limit(RLIMIT_CPU, kSeconds);
  limit(RLIMIT_CORE, 0);
  // What does not become smaller by packing, and the names.
  limit(RLIMIT_FSIZE, kMostBytes + kMostBytes / 4);
  signal(SIGXFSZ, SIG_IGN);  // write() reports a result that is too long
  signal(SIGPIPE, SIG_IGN);
  if (!kSanitizerBuild) {
    limit(RLIMIT_AS, rlim_t{1} << 30U);  // the names of all entries are held
  }
}

void confine(int folder) {
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  leave_one_folder(folder);
  leave_few_calls();
}

}  // namespace quoll::folder_helper
