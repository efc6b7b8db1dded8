// Drafts on file systems that lack something.
#include <gtest/gtest.h>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/integration/waiting_drafts.h"

namespace quoll::test {
namespace {

class LesserDisk : public WaitingDrafts {
 protected:
  void SetUp() override {
    if (sandbox::kSanitizerBuild) {
      GTEST_SKIP() << "a sanitizer has to be loaded first";
    }
  }
  [[nodiscard]] Ended compose_without(const std::string& lacks, const std::string& argument) const {
    return run(
        {"env", "LD_PRELOAD=" QUOLL_LESSER_DISK, "QUOLL_LACKS=" + lacks, QUOLL_COMPOSE, argument},
        home_.bus.environment());
  }
};

TEST_F(LesserDisk, WithoutExclusiveRenamesOrSyncingOfFoldersADraftIsGiven) {
  choose_counted("claws-mail");
  for (const char* const lacks : {"rename", "sync"}) {
    const auto before = starts();
    const auto ended = compose_without(lacks, ReceiverHome::url({home_.stage("a", "x")}));
    EXPECT_EQ(ended.status, 0) << lacks << ended.output << ended.errors;
    EXPECT_EQ(starts(), before + 1) << lacks << ended.output;
  }
  EXPECT_EQ(home_.drafts().size(), 2U);
  EXPECT_TRUE(home_.taken().empty());
}

TEST_F(LesserDisk, ADraftThatCannotBeLockedWaitsAndThatIsSaid) {
  add_waiting("20200101-000000", "quoll://compose?subject=waits");
  const auto ended = compose_without("lock", "--resume");
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(
      ended.output,
      "Draft: " + taken_file("20200101-000000") +
          "\nThe draft 20200101-000000 waits: its folder cannot be locked: No locks available.\n");
  EXPECT_EQ(home_.compose({"--resume"}).status, 0);
  EXPECT_EQ(home_.drafts().size(), 1U);
}

TEST_F(LesserDisk, WhatWasTakenStaysUntilTheDraftIsOnTheDisk) {
  for (const char* const lacks : {"disk of files", "disk of folders"}) {
    add_waiting("20200101-000000", "quoll://compose?subject=waits");
    const auto ended = compose_without(lacks, "--resume");
    EXPECT_EQ(ended.status, 1) << lacks;
    EXPECT_TRUE(
        holds(ended.output,
              "The draft 20200101-000000 waits: it cannot be written: Input/output error.\n"))
        << lacks;
    EXPECT_EQ(home_.taken().size(), 1U) << lacks;
    EXPECT_EQ(home_.compose({"--resume"}).status, 0) << lacks;
    EXPECT_EQ(home_.drafts().size(), 1U) << lacks;
    EXPECT_EQ(home_.compose({"--delete", "20200101-000000"}).status, 0) << lacks;
  }
}

TEST_F(LesserDisk, WhatIsLostWhenAFileIsClosedIsNotPromised) {
  for (const char* const lacks : {"close /.command", "close /.sizes"}) {
    const auto refused = compose_without(lacks, "quoll://compose?");
    EXPECT_EQ(refused.status, 1) << lacks;
    EXPECT_EQ(refused.errors, "quoll-compose: the draft cannot be taken into " +
                                  home_.taken_folder() + ": input/output error\n")
        << lacks;
    EXPECT_TRUE(home_.taken().empty()) << lacks;
  }
}

}  // namespace
}  // namespace quoll::test
