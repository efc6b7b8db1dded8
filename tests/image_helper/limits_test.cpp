// What the helper may use, and how large a picture may be.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "apps/image-helper/codecs/picture.h"
#include "apps/sandbox/sanitizer_build.h"
#include "quoll/linux/image_helper/memory_file.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "tests/support/temporary_folder.h"

namespace quoll::image_helper {
namespace {

TEST(PictureLimits, APictureHas2To28Pixels) {
  EXPECT_NO_THROW(check_size(1U << 14U, 1U << 14U));
  EXPECT_NO_THROW(check_size(1, 1U << 28U));
  EXPECT_THROW(check_size(1, (1U << 28U) + 1), ImageError);
  EXPECT_THROW(check_size((1U << 14U) + 1, 1U << 14U), ImageError);
  EXPECT_THROW(check_size(~0ULL, ~0ULL), ImageError) << "more than a number holds";
  EXPECT_THROW(check_size(0, 1), ImageError);
}

TEST(PictureLimits, OneGibibyteOfPixelsIsHeld) {
  Picture picture;
  picture.channels = 4;
  picture.bits = 16;
  picture.width = 1U << 14U;
  picture.height = (1U << 13U) + 1;
  EXPECT_THROW(HeldPicture{picture}, ImageError) << "one row more";
}

/// A helper that waits for somebody to read what it says.
class WaitingHelper {
 public:
  WaitingHelper() : pipe_(posix::make_pipe()) {
    const std::string much(1 << 20, 'x');
    const int writing = pipe_.writing.get();
    fcntl(writing, F_SETFL, O_NONBLOCK);
    while (write(writing, much.data(), much.size()) > 0 || write(writing, "x", 1) > 0) {
    }
    fcntl(writing, F_SETFL, 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writing, STDERR_FILENO);
    std::string program = QUOLL_TEST_IMAGE_HELPER;
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
      const std::string stat = test::read_file(name);
      const char state = stat.at(stat.rfind(')') + 2);
      ASSERT_NE(state, 'Z') << "it has ended";
      asleep = state == 'S' ? asleep + 1 : 0;
    }
  }

  posix::Pipe pipe_;
  pid_t process_ = -1;
};

TEST(HelperLimits, AreSetBeforeAnyByteIsRead) {
  const WaitingHelper helper;
  EXPECT_EQ(helper.limit(RLIMIT_FSIZE), rlim_t{1} << 30U) << "the longest result";
  EXPECT_EQ(helper.limit(RLIMIT_CPU), 30U);
  EXPECT_EQ(helper.limit(RLIMIT_CORE), 0U);
  if (!sandbox::kSanitizerBuild) {
    EXPECT_EQ(helper.limit(RLIMIT_AS), rlim_t{3} << 30U);
  }
}

}  // namespace
}  // namespace quoll::image_helper
