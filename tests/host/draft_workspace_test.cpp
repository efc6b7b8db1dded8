#include "apps/share/draft_workspace.h"

#include <gtest/gtest.h>

#include "quoll/linux/gio/launcher.h"
#include "quoll/message/extension_message.h"
#include "tests/support/recorders.h"

namespace quoll::share {
namespace {

using foundation::NSURL;
using foundation::Value;
using Lines = std::vector<std::string>;

class Drafts : public testing::Test {
 protected:
  /// What is opened of a command; empty when nothing is.
  std::string opened(const Envelope& envelope, const char* command) {
    DraftWorkspace drafts(workspace_);
    drafts.set_envelope(envelope);
    const bool is_opened = drafts.openURLs({NSURL::URLWithString(command)}, "a.b", {});
    const auto all = workspace_->opened();
    EXPECT_EQ(is_opened, !all.empty());
    return all.empty() ? "" : all.back().urls.at(0);
  }

  std::shared_ptr<test::RecordingLog> log_ = std::make_shared<test::RecordingLog>();
  std::shared_ptr<test::RecordingWorkspace> workspace_ =
      std::make_shared<test::RecordingWorkspace>();
  platform::ScopedDesktop desktop_{{.log = log_}};
};

TEST_F(Drafts, WhatWasSaidStandsBehindTheCommand) {
  const std::string command = "quoll://compose?unknown=%41&attachment_0=%2Fa";
  const std::string url =
      opened({"S & T", {"a@x", "\"B, C\" <b@x>"}, {"c@x"}, {"d@x"}}, command.c_str());
  EXPECT_EQ(url, command +
                     "&subject=S%20%26%20T&to=a%40x%3B%22B%2C%20C%22%20%3Cb%40x%3E%3B"
                     "&cc=c%40x%3B&bcc=d%40x%3B");
  const auto message = ExtensionMessage::ExtensionMessageWithUrl(NSURL::URLWithString(url));
  EXPECT_EQ(message->subject(), Value("S & T"));
  EXPECT_EQ(message->toString(), Value("a@x;\"B, C\" <b@x>;"));
  EXPECT_EQ(message->ccString(), Value("c@x;"));
  EXPECT_EQ(message->bccString(), Value("d@x;"));
}

TEST_F(Drafts, WithoutAWordTheCommandStaysAsItIs) {
  const char* const command = "quoll://compose?htmlBody=x";
  EXPECT_EQ(opened({}, command), command);
}

TEST_F(Drafts, ASubjectThatALinkHasBroughtStays) {
  const char* const command = "quoll://compose?htmlBody=x&subject=S";
  EXPECT_EQ(opened({"S", {}, {}, {}}, command), command);
}

TEST_F(Drafts, NothingUselessIsOpened) {
  for (const char* const command :
       {"quoll://compose?", "quoll://compose?subject=S", "quoll://compose?htmlBody="}) {
    EXPECT_EQ(opened({"S", {"a@x"}, {}, {}}, command), "") << command;
  }
  ASSERT_EQ(log_->lines().size(), 3U);
  EXPECT_EQ(log_->lines()[0], "openURLs nothing that was given can be shared");
  const auto error = log_->events()[0].error;
  EXPECT_EQ(error->code, foundation::kNotOpenedError);
  EXPECT_NE(error->detail(gio::kAdviceKey), nullptr);
}

TEST_F(Drafts, OneAttachmentALinkOrATextIsEnough) {
  for (const char* const command : {"quoll://compose?attachment_0=%2Fa",
                                    "quoll://compose?htmlBody=x", "quoll://compose?plainBody=x"}) {
    EXPECT_EQ(opened({}, command), command);
  }
}

TEST_F(Drafts, ANullUrlIsLeftToWhoOpens) {
  class Refusing final : public platform::NSWorkspace {
   public:
    bool openURLs(const std::vector<std::shared_ptr<NSURL>>& urls, std::string_view /*application*/,
                  platform::NSWorkspaceLaunchOptions /*options*/) override {
      EXPECT_EQ(urls.at(0), nullptr);
      return false;
    }
  };
  EXPECT_FALSE(DraftWorkspace(std::make_shared<Refusing>()).openURLs({nullptr}, "a.b", {}));
}

}  // namespace
}  // namespace quoll::share
