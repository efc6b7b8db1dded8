#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

#include "apps/share/print_workspace.h"
#include "apps/share/shared_item.h"
#include "apps/share/watched_desktop.h"
#include "apps/share/watched_queue.h"
#include "apps/share/watched_workspace.h"
#include "quoll/foundation/exception.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"
#include "quoll/platform/type_identifiers.h"
#include "tests/host/folder_files.h"
#include "tests/support/recorders.h"
#include "tests/support/temporary_folder.h"

namespace quoll::share {
namespace {

using foundation::NSURL;
using Lines = std::vector<std::string>;
using namespace std::chrono_literals;

class LoggingWorkspace final : public platform::NSWorkspace {
 public:
  bool openURLs(const std::vector<std::shared_ptr<NSURL>>& /*urls*/,
                std::string_view /*application*/, unsigned /*options*/) override {
    platform::log_reason("openURLs",
                         foundation::quoll_error(foundation::kNotOpenedError, "nobody is there"));
    return false;
  }
};

TEST(WatchedWorkspace, RemembersWhatWasOpenedAndWhatCameOfIt) {
  auto recorder = std::make_shared<test::RecordingWorkspace>();
  WatchedWorkspace workspace(recorder);
  EXPECT_FALSE(workspace.opening()) << "nothing was asked for yet";
  const auto url = NSURL::URLWithString("quoll://compose?subject=x");
  EXPECT_TRUE(workspace.openURLs({url}, "an.application", 131072));
  const auto opening = workspace.opening();
  ASSERT_TRUE(opening);
  EXPECT_TRUE(opening->is_opened);
  EXPECT_EQ(opening->application, "an.application");
  EXPECT_EQ(opening->urls, std::vector{url});
  EXPECT_EQ(recorder->opened().at(0).options, 131072U);
}

TEST(WatchedWorkspace, HearsWhyNothingWasOpened) {
  auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = watched_log(log, false)});
  WatchedWorkspace workspace(std::make_shared<LoggingWorkspace>());
  platform::log_line("before");
  EXPECT_FALSE(workspace.openURLs({}, "x", 0));
  ASSERT_EQ(workspace.opening()->logged.size(), 1U);
  EXPECT_EQ(workspace.opening()->logged[0].error->code, foundation::kNotOpenedError);
  EXPECT_EQ(log->lines(), (Lines{"before", "openURLs nobody is there"})) << "the log gets them all";
}

TEST(Printer, OneLineAUrl) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const posix::UniqueFd reading(ends[0]);
  posix::UniqueFd writing(ends[1]);
  EXPECT_TRUE(printer(writing.get())->openURLs({NSURL::URLWithString("quoll://compose?")}, "x", 0));
  writing.reset();
  std::string printed;
  bool ended = false;
  ASSERT_TRUE(posix::read_until(reading.get(), printed, 4096, ended));
  EXPECT_EQ(printed, "quoll://compose?\n");
}

TEST(Printer, SaysWhyItCannot) {
  auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = log});
  EXPECT_FALSE(printer(-1)->openURLs({NSURL::URLWithString("x:")}, "x", 0));
  EXPECT_EQ(log->lines(), Lines{"openURLs the URL cannot be written: bad file descriptor"});
  EXPECT_EQ(log->events().at(0).error->code, foundation::kNotOpenedError);
}

TEST(WatchedQueue, WaitsForBackgroundBlocksOnly) {
  const auto held = std::make_shared<test::HeldQueue>();
  WatchedQueue queue(held);
  queue.async(platform::QueuePriority::kDefault, [] {});
  EXPECT_TRUE(queue.wait_for_background(0ms));
  queue.async(platform::QueuePriority::kBackground, [] {});
  EXPECT_FALSE(queue.wait_for_background(0ms));
  held->run();
  EXPECT_TRUE(queue.wait_for_background(0ms));
}

TEST(WatchedQueue, WhatABlockHoldsGoesBeforeItHasEnded) {
  auto threads = std::make_shared<test::ThreadQueue>();
  WatchedQueue queue(threads);
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watched = held;
  queue.async(platform::QueuePriority::kBackground, [held = std::move(held)] {});
  ASSERT_TRUE(queue.wait_for_background(60s));
  EXPECT_TRUE(watched.expired());
}

TEST(WatchedQueue, WhatLeavesABlockIsHeard) {
  auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = watched_log(log, false)});
  auto threads = std::make_shared<test::ThreadQueue>();
  WatchedQueue queue(threads);
  queue.async(platform::QueuePriority::kBackground, [] { throw std::bad_alloc(); });
  ASSERT_TRUE(queue.wait_for_background(60s));
  ASSERT_EQ(queue.witness().logged().size(), 1U);
  EXPECT_TRUE(queue.witness().logged()[0].text.starts_with("the share ended early: "));
  EXPECT_EQ(queue.witness().logged()[0].error->code, foundation::kShareEndedError);
}

TEST(WatchedFiles, TellsTheWitnessOfTheThread) {
  const test::TemporaryFolder folder;
  const std::string source = folder.write("a", "x");
  const auto files = watched_files(std::make_shared<test::FolderFiles>(folder.path()));
  Witness witness;
  const Witness::Scope scope(witness);
  std::optional<foundation::Error> error;
  EXPECT_TRUE(files->copyItemAtPath(source, folder.path("b"), error));
  EXPECT_FALSE(files->copyItemAtPath(source, folder.path("b"), error)) << "it is there already";
  EXPECT_FALSE(files->writeToFile({}, folder.path("c"), 0, error));
  std::thread([&] {
    std::optional<foundation::Error> other;
    EXPECT_TRUE(files->copyItemAtPath(source, folder.path("d"), other));
  }).join();
  EXPECT_EQ(witness.files(), Lines{folder.path("b")}) << "what failed or was others' is not here";
}

TEST(SharedItem, AnswersOnTheDefaultQueueAndRemembers) {
  const auto held = std::make_shared<test::HeldQueue>();
  const platform::ScopedDesktop desktop({.queue = held});
  const auto url = NSURL::URLWithString("https://h/");
  const auto item = std::make_shared<SharedItem>("https://h/", platform::kUTTypeURL, url);
  EXPECT_EQ(item->state(), SharedItem::State::kNotAsked);
  foundation::Value answer;
  SharedItem::State during{};
  item->loadItemForTypeIdentifier(platform::kUTTypeURL, [&](const auto& value, const auto& error) {
    EXPECT_FALSE(error);
    answer = value;
    during = item->state();
  });
  EXPECT_EQ(item->state(), SharedItem::State::kAsked);
  EXPECT_EQ(held->priorities(), std::vector{platform::QueuePriority::kDefault});
  held->run();
  EXPECT_EQ(item->state(), SharedItem::State::kAnswered);
  EXPECT_EQ(during, SharedItem::State::kAnswering);
  EXPECT_EQ(answer, foundation::Value(url));
}

TEST(SharedItem, HoldsItsTypeAndThoseAbove) {
  const auto file = NSURL::file_url("/a", false);
  const SharedItem item("a", platform::kUTTypeFileURL, file);
  EXPECT_TRUE(item.hasItemConformingToTypeIdentifier(platform::kUTTypeURL));
  EXPECT_FALSE(item.hasItemConformingToTypeIdentifier(platform::kUTTypeImage));
  EXPECT_EQ(item.file_path(), "/a");
  const SharedItem image("-", platform::kUTTypeImage, foundation::Bytes{1});
  EXPECT_FALSE(image.hasItemConformingToTypeIdentifier(platform::kUTTypeURL));
  EXPECT_TRUE(image.hasItemConformingToTypeIdentifier(platform::kUTTypeImage));
}

TEST(SharedItem, WhatLeavesAHandlerEndsThere) {
  auto log = std::make_shared<test::RecordingLog>();
  const auto held = std::make_shared<test::HeldQueue>();
  const platform::ScopedDesktop desktop({.log = watched_log(log, false), .queue = held});
  const auto first = std::make_shared<SharedItem>("a", platform::kUTTypeURL, nullptr);
  const auto second = std::make_shared<SharedItem>("b", platform::kUTTypeURL, nullptr);
  first->loadItemForTypeIdentifier(
      "", [](const auto&, const auto&) { foundation::raise_invalid_argument("a wrong kind"); });
  second->loadItemForTypeIdentifier(
      "", [](const auto&, const auto&) { throw std::runtime_error("x"); });
  held->run();
  EXPECT_EQ(log->lines(),
            (Lines{"loadItemForTypeIdentifier a wrong kind", "loadItemForTypeIdentifier x"}));
  ASSERT_EQ(first->witness().logged().size(), 1U);
  EXPECT_EQ(first->witness().logged()[0].error->text, "a wrong kind");
  ASSERT_EQ(second->witness().logged().size(), 1U);
  EXPECT_EQ(second->witness().logged()[0].error->text, "x");
  EXPECT_EQ(first->state(), SharedItem::State::kAnswered);
}

}  // namespace
}  // namespace quoll::share
