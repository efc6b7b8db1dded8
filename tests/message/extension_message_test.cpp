#include "quoll/message/extension_message.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "quoll/records/addressable.h"

namespace quoll {
namespace {

TEST(NewMessage, HasFourListsOfItsOwn) {
  const auto message = ExtensionMessage::make();
  message->to().addObject("to");
  message->cc().addObject("cc");
  message->bcc().addObject("bcc");
  message->attachments().addObject("attachment");
  for (const auto& list : {message->to(), message->cc(), message->bcc(), message->attachments()}) {
    EXPECT_EQ(list.count(), 1U);
  }
  EXPECT_TRUE(ExtensionMessage::make()->to().empty()) << "nor are they shared between messages";
}

TEST(ParsedMessage, HasFourListsOfItsOwn) {
  const auto message = ExtensionMessage::ExtensionMessageWithUrl(nullptr);
  message->to().addObject("to");
  EXPECT_TRUE(message->cc().empty());
  EXPECT_TRUE(message->bcc().empty());
  EXPECT_TRUE(message->attachments().empty());
}

/// What another thread makes of a message that this one holds, and changes, for a while.
template <typename Make>
auto made_meanwhile(ExtensionMessage& message, const Make& make) {
  auto lock = message.synchronized();
  std::promise<void> started;
  auto made = std::async(std::launch::async, [&] {
    started.set_value();
    return make();
  });
  started.get_future().wait();
  EXPECT_EQ(made.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout)
      << "it waits for the lock";
  message.attachments().addObject("/late");
  lock.unlock();
  return made.get();
}

TEST(Message, ItsUrlWaitsForItsLock) {
  const auto message = ExtensionMessage::make();
  const auto url = made_meanwhile(*message, [&] { return message->queryUrl("compose"); });
  ASSERT_NE(url, nullptr);
  EXPECT_EQ(url->absoluteString(), "quoll://compose?attachment_0=%2Flate");
}

/// A recipient that sees, when it is asked for its address, whether another thread can have the
/// message.
class Watching final : public foundation::Object, public Addressable {
 public:
  explicit Watching(const ExtensionMessage& message) : message_(message) {}

  [[nodiscard]] foundation::Value address() const override {
    other_ = std::async(std::launch::async, [this] { message_.synchronized().unlock(); });
    was_locked = other_.wait_for(std::chrono::milliseconds(200)) == std::future_status::timeout;
    return "a@h";
  }
  [[nodiscard]] std::string_view class_name() const override { return "Watching"; }
  [[nodiscard]] std::string description() const override { return "Watching"; }

  mutable bool was_locked = false;

 private:
  const ExtensionMessage& message_;
  mutable std::future<void> other_;
};

TEST(Message, IsLockedWhileItsUrlIsMade) {
  const auto message = ExtensionMessage::make();
  const auto recipient = std::make_shared<Watching>(*message);
  message->to().addObject(recipient);
  const auto url = message->queryUrl("compose");
  ASSERT_NE(url, nullptr);
  EXPECT_EQ(url->absoluteString(), "quoll://compose?to=a%40h%3B");
  EXPECT_TRUE(recipient->was_locked);
}

TEST(Message, ItsHtmlWaitsForItsLock) {
  const auto message = ExtensionMessage::make();
  message->htmlBody = "body";
  EXPECT_EQ(made_meanwhile(*message, [&] { return message->renderHtml(); }),
            "body<img src=\"file:///late\"/><br/>");
}

}  // namespace
}  // namespace quoll
