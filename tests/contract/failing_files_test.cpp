#include "tests/support/failing_files.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "tests/support/memory_files.h"

namespace quoll {
namespace {

using Operation = test::FailingFiles::Operation;

TEST(FailingFiles, TheNthCallFailsAndTouchesNothing) {
  test::FailingFiles files(std::make_shared<test::MemoryFiles>());
  files.fail(Operation::kWrite, 2, foundation::file_error(ENOSPC, "/home/b", true));
  EXPECT_FALSE(files.writeToFile({}, "/home/a", {}));
  const auto error = files.writeToFile({}, "/home/b", {});
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code, foundation::NSFileWriteOutOfSpaceError);
  EXPECT_FALSE(files.writeToFile({}, "/home/c", {}));
  EXPECT_FALSE(files.fileExistsAtPath("/home/b"));
  EXPECT_TRUE(files.fileExistsAtPath("/home/c"));
  EXPECT_EQ(files.calls(Operation::kWrite), 3);
  EXPECT_EQ(files.calls(Operation::kCopy), 0);
}

TEST(FailingFiles, CountsFromTheCallToFail) {
  test::FailingFiles files(std::make_shared<test::MemoryFiles>());
  EXPECT_TRUE(files.containerURLForSecurityApplicationGroupIdentifier("g"));
  files.fail(Operation::kContainer, 1, {});
  EXPECT_FALSE(files.containerURLForSecurityApplicationGroupIdentifier("g"));
  EXPECT_TRUE(files.containerURLForSecurityApplicationGroupIdentifier("g"));
}

}  // namespace
}  // namespace quoll
