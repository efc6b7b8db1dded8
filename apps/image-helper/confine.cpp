#include "apps/image-helper/confine.h"

#include <fcntl.h>
#include <sys/prctl.h>

#include <csignal>

#include "apps/image-helper/codecs/picture.h"
#include "apps/sandbox/call_filter.h"
#include "apps/sandbox/helper_process.h"
#include "apps/sandbox/path_rules.h"
#include "apps/sandbox/sanitizer_build.h"
#include "quoll/linux/image_helper/answers.h"

namespace quoll::image_helper {

namespace {

using sandbox::kSanitizerBuild;
using sandbox::limit;

/// Gives up files, folders, TCP connections, and signals to other processes.
void leave_no_paths() {
  sandbox::PathRules rules;
  if (kSanitizerBuild) {
    rules.allow("/proc/self", sandbox::PathRules::Access::kRead);
  }
  (void)!rules.enforce();
}

/// Leaves only the system calls for memory, for the open descriptors and for the end of the
/// process.
void leave_few_calls() {
  using namespace sandbox;
  CallFilter filter;
  filter.allow({"read", "write", "writev", "lseek", "dup", "close", "fstat"});
  filter.allow("fcntl", {is(1, F_ADD_SEALS)});
  allow_running(filter);
  (void)!filter.enforce();
}

}  // namespace

void limit_resources() {
  sandbox::end_with_parent();
  constexpr rlim_t kSeconds = 30;
  limit(RLIMIT_CPU, kSeconds);
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_FSIZE, kLongestResult);
  signal(SIGXFSZ, SIG_IGN);  // write() reports a result that is too long
  signal(SIGPIPE, SIG_IGN);
  if (!kSanitizerBuild) {
    // Room for the held pixels, for a decoder's own copy, and for the file and the libraries.
    limit(RLIMIT_AS, 3 * kMostHeldBytes);
  }
}

void confine() {
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  leave_no_paths();
  leave_few_calls();
}

}  // namespace quoll::image_helper
