#include "apps/share/shared_item.h"

#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <thread>

#include "quoll/foundation/exception.h"
#include "quoll/platform/type_identifiers.h"
#include "quoll/recording/recording_ports.h"
#include "tests/support/recorders.h"

namespace quoll::share {
namespace {

using foundation::NSURL;
using Lines = std::vector<std::string>;

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

/// Asks each item for itself; `handler` is called with its number when it answers.
std::vector<std::shared_ptr<SharedItem>> ask_items(int count,
                                                   const std::function<void(int)>& handler) {
  const auto answers = std::make_shared<SerialQueue>();
  std::vector<std::shared_ptr<SharedItem>> items;
  for (int number = 0; number < count; ++number) {
    items.push_back(
        std::make_shared<SharedItem>("", platform::kUTTypeURL, foundation::Value(), answers));
    items.push_back(std::make_shared<SharedItem>("never asked", platform::kUTTypeURL,
                                                 foundation::Value(), answers));
    items[items.size() - 2]->loadItemForTypeIdentifier(
        platform::kUTTypeURL, [=](const auto&, const auto&) { handler(number); });
  }
  return items;
}

TEST(SharedItem, AnswersWhenTheOneBeforeItIsDone) {
  const auto threads = std::make_shared<test::ThreadQueue>();
  const platform::ScopedDesktop desktop({.queue = threads});
  std::vector<int> answered;  // no lock: two at a time would be an error
  const auto items = ask_items(50, [&](int number) {
    std::this_thread::sleep_for(std::chrono::microseconds((50 - number) * 20));
    answered.push_back(number);
    foundation::raise_invalid_argument("this holds nobody up");
  });
  threads->wait();
  std::vector<int> asked(50);
  std::iota(asked.begin(), asked.end(), 0);
  EXPECT_EQ(answered, asked);
  EXPECT_EQ(items[1]->state(), SharedItem::State::kNotAsked);
}

TEST(SharedItem, ThousandsTakeOneBlockOfTheQueue) {
  const auto held = std::make_shared<test::HeldQueue>();
  const platform::ScopedDesktop desktop({.queue = held});
  int answered = 0;
  const auto items = ask_items(10'000, [&](int number) { EXPECT_EQ(number, answered++); });
  held->run();
  EXPECT_EQ(answered, 10'000);
  EXPECT_EQ(held->priorities().size(), 1U);
}

TEST(SharedItem, AQueueWithoutAThreadIsTriedAgain) {
  const auto item = std::make_shared<SharedItem>("", platform::kUTTypeURL, foundation::Value());
  int answered = 0;
  const auto ask = [&] {
    item->loadItemForTypeIdentifier("", [&](const auto&, const auto&) { ++answered; });
  };
  class Refusing final : public platform::Queue {
   public:
    void async(platform::QueuePriority /*priority*/, std::function<void()> /*block*/) override {
      throw std::runtime_error("no thread");
    }
  };
  {
    const platform::ScopedDesktop desktop({.queue = std::make_shared<Refusing>()});
    EXPECT_THROW(ask(), std::runtime_error);
  }
  const auto held = std::make_shared<test::HeldQueue>();
  const platform::ScopedDesktop desktop({.queue = held});
  ask();
  held->run();
  EXPECT_EQ(answered, 1);
}

TEST(SharedItem, HoldsItsTypeAndThoseAbove) {
  const auto file = NSURL::file_url("/a", false);
  const SharedItem item("a", platform::kUTTypeFileURL, file);
  EXPECT_TRUE(item.hasItemConformingToTypeIdentifier(platform::kUTTypeURL));
  EXPECT_FALSE(item.hasItemConformingToTypeIdentifier(platform::kUTTypeImage));
  EXPECT_EQ(foundation::file_system_path(item.value().as<foundation::NSURL>()), "/a");
  const SharedItem image("-", platform::kUTTypeImage, foundation::Bytes{1});
  EXPECT_FALSE(image.hasItemConformingToTypeIdentifier(platform::kUTTypeURL));
  EXPECT_TRUE(image.hasItemConformingToTypeIdentifier(platform::kUTTypeImage));
}

TEST(SharedItem, WhatLeavesAHandlerEndsThere) {
  auto log = std::make_shared<test::RecordingLog>();
  const auto held = std::make_shared<test::HeldQueue>();
  const platform::ScopedDesktop desktop(
      {.log = std::make_shared<recording::RecordingLog>(log), .queue = held});
  const auto first = std::make_shared<SharedItem>("a", platform::kUTTypeURL, nullptr);
  const auto second = std::make_shared<SharedItem>("b", platform::kUTTypeURL, nullptr);
  first->loadItemForTypeIdentifier(
      "", [](const auto&, const auto&) { foundation::raise_invalid_argument("a wrong kind"); });
  second->loadItemForTypeIdentifier(
      "", [](const auto&, const auto&) { throw std::runtime_error("x"); });
  held->run();
  EXPECT_EQ(log->lines(),
            (Lines{"loadItemForTypeIdentifier a wrong kind", "loadItemForTypeIdentifier x"}));
  const auto of_first = recording::events_of_kind<platform::LogEvent>(first->events());
  const auto of_second = recording::events_of_kind<platform::LogEvent>(second->events());
  ASSERT_EQ(of_first.size(), 1U);
  EXPECT_EQ(of_first[0].error->text, "a wrong kind");
  ASSERT_EQ(of_second.size(), 1U);
  EXPECT_EQ(of_second[0].error->text, "x");
  EXPECT_EQ(first->state(), SharedItem::State::kAnswered);
}

}  // namespace
}  // namespace quoll::share
