#include "quoll/message/command_launcher.h"

#include <gtest/gtest.h>

#include "tests/support/recorders.h"

namespace quoll {
namespace {

using ExtensionUtilities::LaunchCommandForMessages;
using ExtensionUtilities::LaunchCommands;

class Launching : public testing::TestWithParam<bool> {
 protected:
  std::shared_ptr<test::RecordingWorkspace> workspace_ =
      std::make_shared<test::RecordingWorkspace>(GetParam());
  std::shared_ptr<test::RecordingLog> log_ = std::make_shared<test::RecordingLog>();
  platform::ScopedDesktop desktop_{{.workspace = workspace_, .log = log_}};
};

TEST_P(Launching, AnswersWhatTheWorkspaceAnswers) {
  const auto url = foundation::NSURL::URLWithString("quoll://compose?");
  for (const bool background : {false, true}) {
    EXPECT_EQ(LaunchCommands({url}, background), GetParam());
    EXPECT_EQ(LaunchCommands({url, url}, background), GetParam());
    const auto message = ExtensionMessage::make();
    EXPECT_EQ(LaunchCommandForMessages({message, message}, commandArchive, background), GetParam());
  }
  EXPECT_EQ(workspace_->opened().size(), 6U);
  EXPECT_TRUE(log_->lines().empty()) << "a failure shows in the answer alone";
}

TEST_P(Launching, AnswersFalseWhenThereIsNothingToOpen) {
  EXPECT_FALSE(LaunchCommands({}, false));
  EXPECT_FALSE(LaunchCommandForMessages({}, commandArchive, false));
  const auto bad = ExtensionMessage::make();
  bad->messageId = "<1>";
  EXPECT_FALSE(LaunchCommandForMessages({bad}, commandArchive, false));
  EXPECT_TRUE(workspace_->opened().empty());
}

INSTANTIATE_TEST_SUITE_P(Opened, Launching, testing::Bool());

}  // namespace
}  // namespace quoll
