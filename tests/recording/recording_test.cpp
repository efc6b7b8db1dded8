#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include "quoll/foundation/exception.h"
#include "quoll/recording/event_recorder.h"
#include "quoll/recording/recording_ports.h"
#include "tests/support/memory_files.h"
#include "tests/support/recorders.h"

namespace quoll::recording {
namespace {

using foundation::NSURL;
using platform::LogEvent;
using Lines = std::vector<std::string>;

/// A recorder of the test's own thread.
class Recording : public testing::Test {
 protected:
  [[nodiscard]] Lines lines() const {
    Lines texts;
    for (const LogEvent& event : events_of_kind<LogEvent>(recorder_->events())) {
      texts.push_back(event.text);
    }
    return texts;
  }

  std::shared_ptr<EventRecorder> recorder_ = std::make_shared<EventRecorder>();
  EventRecorder::Scope scope_{recorder_};
  std::shared_ptr<test::RecordingLog> log_ = std::make_shared<test::RecordingLog>();
};

class LoggingWorkspace final : public platform::NSWorkspace {
 public:
  bool openURLs(const std::vector<std::shared_ptr<NSURL>>& /*urls*/,
                std::string_view /*application*/,
                platform::NSWorkspaceLaunchOptions /*options*/) override {
    platform::log_line("nobody is there");
    return false;
  }
};

TEST_F(Recording, TheInnermostScopeOfAThreadCounts) {
  const auto inner = std::make_shared<EventRecorder>();
  {
    const EventRecorder::Scope scope(inner);
    EXPECT_EQ(EventRecorder::current(), inner);
    record(LogEvent{"inside"});
    const EventRecorder::Scope nobody(nullptr);
    record(LogEvent{"unseen"});
  }
  record(LogEvent{"outside"});
  std::thread([] {
    EXPECT_EQ(EventRecorder::current(), nullptr);
    record(LogEvent{"of another thread"});
  }).join();
  EXPECT_EQ(lines(), Lines{"outside"});
  EXPECT_EQ(inner->events().size(), 1U);
}

TEST_F(Recording, WhatComesAfterTheEndIsDropped) {
  record(LogEvent{"in time"});
  EXPECT_EQ(recorder_->close().size(), 1U);
  record(LogEvent{"late"});
  EXPECT_TRUE(recorder_->events().empty());
  EXPECT_TRUE(recorder_->close().empty());
}

TEST_F(Recording, TheLogGetsWhatIsRecorded) {
  const platform::ScopedDesktop desktop({.log = std::make_shared<RecordingLog>(log_)});
  const auto error = foundation::file_error(ENOENT, "/x", true);
  platform::log("shareInit %@", error);
  EXPECT_EQ(lines(), log_->lines());
  const auto events = events_of_kind<LogEvent>(recorder_->events());
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0].error->code, error.code);
}

TEST_F(Recording, AnOpeningItsLogAndItsAnswerStandInOrder) {
  const platform::ScopedDesktop desktop({.log = std::make_shared<RecordingLog>(log_)});
  RecordingWorkspace workspace(std::make_shared<LoggingWorkspace>());
  const auto url = NSURL::URLWithString("quoll://compose?subject=x");
  EXPECT_FALSE(workspace.openURLs({url}, "an.application",
                                  platform::NSWorkspaceLaunchAllowingClassicStartup));
  const auto events = recorder_->events();
  ASSERT_EQ(events.size(), 3U);
  const auto& opening = std::get<Opening>(events[0]);
  EXPECT_EQ(opening.urls, std::vector{url});
  EXPECT_EQ(opening.application, "an.application");
  EXPECT_EQ(opening.options, 131072U);
  EXPECT_EQ(std::get<LogEvent>(events[1]).text, "nobody is there");
  EXPECT_FALSE(std::get<OpeningAnswer>(events[2]).is_opened);
}

TEST_F(Recording, TheWorkspaceBeneathOpens) {
  auto beneath = std::make_shared<test::RecordingWorkspace>();
  constexpr auto kOptions = platform::NSWorkspaceLaunchWithoutActivation;
  EXPECT_TRUE(RecordingWorkspace(beneath).openURLs({NSURL::URLWithString("x:")}, "a", kOptions));
  EXPECT_EQ(beneath->opened(),
            (std::vector<test::RecordingWorkspace::Opened>{{{"x:"}, "a", kOptions}}));
  EXPECT_TRUE(events_of_kind<OpeningAnswer>(recorder_->events()).at(0).is_opened);
}

TEST_F(Recording, ANotificationIsRecordedBeforeItsObserversHear) {
  RecordingNotifications center(platform::make_notification_center());
  std::size_t seen = 0;
  center.addObserver(this, "N", nullptr, [&](std::string_view /*name*/, const auto& /*object*/) {
    seen = recorder_->events().size();
  });
  center.postNotificationName("N", "object");
  EXPECT_EQ(seen, 1U);
  center.removeObserver(this);
  center.postNotificationName("N", "again");
  const auto posted = events_of_kind<Notification>(recorder_->events());
  ASSERT_EQ(posted.size(), 2U);
  EXPECT_EQ(seen, 1U) << "the observer was removed";
  EXPECT_EQ(posted[0].name, "N");
  EXPECT_EQ(posted[0].object, foundation::Value("object"));
}

TEST_F(Recording, FilesThatWereWrittenAreRecorded) {
  RecordingFiles files(std::make_shared<test::MemoryFiles>());
  EXPECT_FALSE(files.writeToFile({1}, "/home/a", {}));
  EXPECT_FALSE(files.copyItemAtPath("/home/a", "/home/b"));
  EXPECT_TRUE(files.copyItemAtPath("/home/a", "/home/b")) << "it is there already";
  EXPECT_TRUE(files.writeToFile({1}, "/nowhere/c", {}));
  std::thread([&] { EXPECT_FALSE(files.copyItemAtPath("/home/a", "/home/d")); }).join();
  const auto written = events_of_kind<WrittenFile>(recorder_->events());
  ASSERT_EQ(written.size(), 2U) << "what failed or was others' is not here";
  EXPECT_EQ(written[0].path, "/home/a");
  EXPECT_EQ(written[1].path, "/home/b");
}

TEST_F(Recording, ABlockTakesItsRecorderAlong) {
  const auto held = std::make_shared<test::HeldQueue>();
  RecordingQueue queue(held);
  queue.async(platform::QueuePriority::kDefault, [&] {
    record(LogEvent{"first"});
    queue.async(platform::QueuePriority::kBackground, [] { record(LogEvent{"second"}); });
  });
  EXPECT_TRUE(recorder_->events().empty());
  std::thread([&] { held->run(); }).join();
  EXPECT_EQ(lines(), (Lines{"first", "second"}));
}

TEST_F(Recording, WhatLeavesABlockIsRecorded) {
  const platform::ScopedDesktop desktop({.log = std::make_shared<RecordingLog>(log_)});
  const auto held = std::make_shared<test::HeldQueue>();
  RecordingQueue(held).async(platform::QueuePriority::kDefault,
                             [] { foundation::raise_invalid_argument("a wrong kind"); });
  held->run();
  EXPECT_EQ(lines(), Lines{"Exception in a queued block a wrong kind"});
}

TEST(Recorded, WhatIsNullStaysNull) {
  const auto log = std::make_shared<test::RecordingLog>();
  const platform::Desktop desktop = recorded({.log = log});
  EXPECT_NE(desktop.log, log);
  EXPECT_EQ(desktop.files, nullptr);
  EXPECT_EQ(desktop.queue, nullptr);
  EXPECT_EQ(desktop.workspace, nullptr);
  EXPECT_EQ(desktop.notifications, nullptr);
}

}  // namespace
}  // namespace quoll::recording
