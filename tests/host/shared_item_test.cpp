#include "apps/share/shared_item.h"

#include <gtest/gtest.h>

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
