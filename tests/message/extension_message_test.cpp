#include "quoll/message/extension_message.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace quoll
