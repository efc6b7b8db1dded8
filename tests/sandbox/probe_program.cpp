// The probes without a sandbox, and programs on a kernel that offers less.
//
//   probe_program                     tries what QUOLL_PROBE names
//   probe_program MISSING COMMAND...  runs a command where MISSING is missing: paths, old-paths
//                                     (rules of version 2), calls, both
#include <fcntl.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "tests/sandbox/probes.h"

namespace {

void refuse(scmp_filter_ctx filter, int call, int number) {
  seccomp_rule_add(filter, SCMP_ACT_ERRNO(static_cast<unsigned>(number)), call, 0);
}

/// A kernel whose rules of paths are of version 2, as far as a program can see; answers its
/// questions until the command has ended.
[[noreturn]] void run_on_old_rules(char** command) {
  const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
  seccomp_rule_add(filter, SCMP_ACT_NOTIFY, SCMP_SYS(landlock_create_ruleset), 1,
                   SCMP_A2(SCMP_CMP_EQ, LANDLOCK_CREATE_RULESET_VERSION));
  if (seccomp_load(filter) != 0) {
    _exit(126);
  }
  const int questions = seccomp_notify_fd(filter);
  const pid_t child = fork();
  if (child == 0) {
    execv(command[0], command);
    _exit(127);
  }
  seccomp_notif* question = nullptr;
  seccomp_notif_resp* answer = nullptr;
  seccomp_notify_alloc(&question, &answer);
  if (seccomp_notify_receive(questions, question) == 0) {
    *answer = {.id = question->id, .val = 2, .error = 0, .flags = 0};
    seccomp_notify_respond(questions, answer);
  }
  int status = 0;
  waitpid(child, &status, 0);
  _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 125);
}

[[noreturn]] void run_without(std::string_view missing, char** command) {
  if (missing == "old-paths") {
    run_on_old_rules(command);
  }
  const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
  if (missing == "paths" || missing == "both") {
    refuse(filter, SCMP_SYS(landlock_create_ruleset), ENOSYS);
  }
  if (missing == "calls" || missing == "both") {
    refuse(filter, SCMP_SYS(seccomp), EINVAL);
    seccomp_rule_add(filter, SCMP_ACT_ERRNO(EINVAL), SCMP_SYS(prctl), 1,
                     SCMP_A0(SCMP_CMP_EQ, PR_SET_SECCOMP));
  }
  if (seccomp_load(filter) != 0) {
    _exit(126);
  }
  execv(command[0], command);
  _exit(127);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2) {
    run_without(argv[1], argv + 2);
  }
  quoll::test::probe_and_end();
}
