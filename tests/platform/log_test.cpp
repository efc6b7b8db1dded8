#include "quoll/platform/log.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "quoll/foundation/exception.h"
#include "quoll/platform/desktop.h"
#include "tests/support/recorders.h"

namespace quoll::platform {
namespace {

class LogTest : public testing::Test {
 protected:
  LogEvent last() const { return log_->events().back(); }

 private:
  std::shared_ptr<test::RecordingLog> log_ = std::make_shared<test::RecordingLog>();
  ScopedDesktop desktop_{{.log = log_}};
};

TEST_F(LogTest, AnEventHoldsTheErrorThatItTells) {
  const auto error = foundation::file_error(ENOENT, "/x", true);
  log("%@ %@", "shareInit", error);
  EXPECT_EQ(last().text, "shareInit " + error.description());
  ASSERT_TRUE(last().error);
  EXPECT_EQ(last().error->description(), error.description());
}

TEST_F(LogTest, AnExceptionIsAnErrorByItsReason) {
  log("Exception %@", foundation::NSException(foundation::NSRangeException, "outside"));
  EXPECT_EQ(last().text, "Exception outside");
  ASSERT_TRUE(last().error);
  EXPECT_EQ(last().error->domain, foundation::kQuollErrorDomain);
  EXPECT_EQ(last().error->code, foundation::kRaisedError);
  EXPECT_EQ(last().error->text, "outside");
}

TEST_F(LogTest, AReasonStandsInTheTextAlone) {
  log_reason("openURLs", foundation::quoll_error(foundation::kNotOpenedError, "nobody is there"));
  EXPECT_EQ(last().text, "openURLs nobody is there");
  ASSERT_TRUE(last().error);
  EXPECT_EQ(last().error->code, foundation::kNotOpenedError);
}

TEST_F(LogTest, WhatIsNoFailureHasNoError) {
  log_line("a line");
  EXPECT_FALSE(last().error);
  log("%@ of %@", 1, "two");
  EXPECT_EQ(last().text, "1 of two");
  EXPECT_FALSE(last().error);
}

}  // namespace
}  // namespace quoll::platform
