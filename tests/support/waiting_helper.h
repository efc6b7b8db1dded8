#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "quoll/linux/posix/descriptor_io.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {

/// A helper that waits for somebody to read what it says.
class WaitingHelper {
 public:
  explicit WaitingHelper(std::string program) : pipe_(posix::make_pipe()) {
    const std::string much(1 << 20, 'x');
    const int writing = pipe_.writing.get();
    fcntl(writing, F_SETFL, O_NONBLOCK);
    while (write(writing, much.data(), much.size()) > 0 || write(writing, "x", 1) > 0) {
    }
    fcntl(writing, F_SETFL, 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writing, STDERR_FILENO);
    char* arguments[] = {program.data(), nullptr};
    EXPECT_EQ(posix_spawn(&process_, program.c_str(), &actions, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    wait_until_it_waits();
  }
  WaitingHelper(const WaitingHelper&) = delete;
  WaitingHelper& operator=(const WaitingHelper&) = delete;
  ~WaitingHelper() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }

  /// One that it has set for itself.
  [[nodiscard]] rlim_t limit(__rlimit_resource resource) const {
    rlimit wanted{};
    EXPECT_EQ(prlimit(process_, resource, nullptr, &wanted), 0);
    return wanted.rlim_max;
  }

 private:
  /// Asleep for some looks in a row, it waits in its only call that can wait.
  void wait_until_it_waits() const {
    const std::string name = "/proc/" + std::to_string(process_) + "/stat";
    for (int asleep = 0; asleep < 5; usleep(2000)) {
      const std::string stat = read_file(name);
      const char state = stat.at(stat.rfind(')') + 2);
      ASSERT_NE(state, 'Z') << "it has ended";
      asleep = state == 'S' ? asleep + 1 : 0;
    }
  }

  posix::Pipe pipe_;
  pid_t process_ = -1;
};

}  // namespace quoll::test
