// What the folder helper may use.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/support/waiting_helper.h"

namespace quoll::test {
namespace {

TEST(FolderHelperLimits, AreSetBeforeAnyNameIsRead) {
  const WaitingHelper helper(QUOLL_FOLDER_HELPER);
  EXPECT_EQ(helper.limit(RLIMIT_FSIZE), rlim_t{5} << 30U) << "the longest result";
  EXPECT_EQ(helper.limit(RLIMIT_CPU), 600U);
  EXPECT_EQ(helper.limit(RLIMIT_CORE), 0U);
  if (!sandbox::kSanitizerBuild) {
    EXPECT_EQ(helper.limit(RLIMIT_AS), rlim_t{1} << 30U);
  }
}

}  // namespace
}  // namespace quoll::test
