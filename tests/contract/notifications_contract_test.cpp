#include "quoll/platform/notifications.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/platform/desktop.h"

namespace quoll {
namespace {

using Center = std::shared_ptr<platform::NSNotificationCenter>;
using foundation::List;
using foundation::Value;

class NotificationsContract : public ::testing::TestWithParam<Center (*)()> {
 protected:
  platform::NSNotificationCenter::Block keep(const std::string& who) {
    return [this, who](std::string_view name, const Value&) {
      calls_.push_back(who + ":" + std::string(name));
    };
  }

  Center center_ = GetParam()();
  std::vector<std::string> calls_;
  int first_ = 0;
  int second_ = 0;
};

TEST_P(NotificationsContract, CallsInTheOrderOfRegistrationBeforeThePostReturns) {
  center_->addObserver(&first_, "n", nullptr, keep("a"));
  center_->addObserver(&second_, "", nullptr, keep("b"));
  center_->addObserver(&first_, "n", nullptr, keep("c"));
  center_->postNotificationName("n", nullptr);
  center_->postNotificationName("other", nullptr);
  EXPECT_EQ(calls_, (std::vector<std::string>{"a:n", "b:n", "c:n", "b:other"}));
}

TEST_P(NotificationsContract, ObjectsMatchByIdentityNotByContent) {
  const auto one = List{"x"};
  const auto alike = List{"x"};
  center_->addObserver(&first_, "n", one, keep("a"));
  center_->postNotificationName("n", alike);
  center_->postNotificationName("n", nullptr);
  EXPECT_TRUE(calls_.empty());
  center_->postNotificationName("n", one);
  EXPECT_EQ(calls_.size(), 1U);
}

TEST_P(NotificationsContract, EveryKindOfObjectIsItself) {
  const Value kinds[] = {Value("text"), foundation::Bytes{1, 2}, List(), foundation::Dictionary(),
                         foundation::NSURL::URLWithString("a:b")};
  for (const Value& object : kinds) {
    center_->addObserver(&first_, "n", object, keep(std::string(object.kind())));
    center_->postNotificationName("n", object);
    EXPECT_EQ(calls_, std::vector<std::string>{std::string(object.kind()) + ":n"});
    center_->removeObserver(&first_);
    calls_.clear();
  }
  center_->addObserver(&first_, "n", 7, keep("number"));
  center_->postNotificationName("n", 7);
  EXPECT_TRUE(calls_.empty()) << "a number is no object";
}

TEST_P(NotificationsContract, AnObserverThatIsAddedMeanwhileWaitsForTheNextPost) {
  center_->addObserver(&first_, "n", nullptr, [&](auto, const auto&) {
    center_->addObserver(&second_, "n", nullptr, keep("added"));
    center_->removeObserver(&first_);
  });
  center_->postNotificationName("n", nullptr);
  EXPECT_TRUE(calls_.empty());
  center_->postNotificationName("n", nullptr);
  EXPECT_EQ(calls_, std::vector<std::string>{"added:n"});
}

TEST_P(NotificationsContract, RemovingTakesAllOfOneObserverAndIgnoresStrangers) {
  center_->addObserver(&first_, "n", nullptr, keep("a"));
  center_->addObserver(&first_, "", nullptr, keep("b"));
  center_->addObserver(&second_, "n", nullptr, keep("c"));
  center_->removeObserver(&first_);
  center_->removeObserver(&calls_);
  center_->postNotificationName("n", nullptr);
  EXPECT_EQ(calls_, std::vector<std::string>{"c:n"});
}

TEST_P(NotificationsContract, AnObserverMayRemoveAnotherWhileItIsCalled) {
  center_->addObserver(&first_, "n", nullptr,
                       [&](auto, const auto&) { center_->removeObserver(&second_); });
  center_->addObserver(&second_, "n", nullptr, keep("removed"));
  center_->postNotificationName("n", nullptr);
  EXPECT_TRUE(calls_.empty());
}

TEST_P(NotificationsContract, WhatABlockOwnsMayRemoveObserversWhenItGoes) {
  const auto remove = [this](const int* observer) { center_->removeObserver(observer); };
  center_->addObserver(&second_, "n", nullptr, keep("removed"));
  center_->addObserver(
      &first_, "n", nullptr,
      [owned = std::shared_ptr<const int>(&second_, remove)](auto, const auto&) {});
  center_->removeObserver(&first_);
  center_->postNotificationName("n", nullptr);
  EXPECT_TRUE(calls_.empty());
}

INSTANTIATE_TEST_SUITE_P(Centers, NotificationsContract,
                         ::testing::Values(
                             +[]() -> Center { return platform::make_notification_center(); },
                             +[]() -> Center { return platform::empty_desktop().notifications; }));

}  // namespace
}  // namespace quoll
