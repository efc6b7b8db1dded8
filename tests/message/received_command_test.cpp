#include "quoll/message/received_command.h"

#include <gtest/gtest.h>

#include "quoll/foundation/exception.h"

namespace quoll {
namespace {

TEST(ReceivedCommand, IsAWordAndAQuery) {
  struct Row {
    const char* reason;
    const char* url;
    const char* command;
    const char* subject;
  };
  for (const Row& row : {
           Row{"a draft", "quoll://compose?subject=a+b%21", "compose", "a b!"},
           Row{"an empty draft", "quoll://compose?", "compose", "null"},
           Row{"no query", "quoll://compose", "compose", "null"},
           Row{"a fragment", "quoll://compose?subject=a#b", "compose", "a"},
           Row{"a fragment alone", "quoll://open#b", "open", "null"},
           Row{"the last value of a key", "quoll://send?subject=a&subject=b", "send", "b"},
           Row{"a query with question marks", "quoll://compose?a=?&subject=b", "compose", "b"},
       }) {
    const ReceivedCommand read = read_received_command(row.url);
    EXPECT_EQ(read.command, row.command) << row.reason;
    const foundation::Value subject = read.message->subject();
    EXPECT_EQ(subject.text() != nullptr ? *subject.text() : "null", row.subject) << row.reason;
  }
}

TEST(ReceivedCommand, AnythingElseIsRefused) {
  struct Row {
    const char* reason;
    const char* url;
  };
  for (const Row& row : {
           Row{"nothing", ""},
           Row{"another scheme", "http://compose?a=b"},
           Row{"a scheme in capitals", "QUOLL://compose?a=b"},
           Row{"no slashes", "quoll:compose?a=b"},
           Row{"a third slash", "quoll:///compose?a=b"},
           Row{"no command", "quoll://?a=b"},
           Row{"an unknown command", "quoll://erase?a=b"},
           Row{"a command in capitals", "quoll://COMPOSE?a=b"},
           Row{"a query without its sign", "quoll://compose&subject=x"},
           Row{"a path", "quoll://compose/?a=b"},
           Row{"a port", "quoll://compose:1?a=b"},
           Row{"a user", "quoll://a@compose?a=b"},
           Row{"an escape in the command", "quoll://comp%6Fse?a=b"},
           Row{"a blank", "quoll://compose?a=b c"},
           Row{"a line feed behind it", "quoll://compose?a=b\n"},
           Row{"a value that is not UTF-8", "quoll://compose?a=%FF"},
           Row{"a key that is not UTF-8", "quoll://compose?%FF=a"},
           Row{"an escape without its digits", "quoll://compose?a=%2"},
           Row{"a query behind the fragment", "quoll://compose#a?b=c"},
       }) {
    EXPECT_THROW(static_cast<void>(read_received_command(row.url)), foundation::NSException)
        << row.reason;
  }
}

// Whoever reads it knows nothing of texts and dictionaries.
TEST(ReceivedCommand, WhatCannotBeReadIsSaidInPlainWords) {
  const auto refused = [](const char* url) -> std::string {
    try {
      static_cast<void>(read_received_command(url));
      return "";
    } catch (const foundation::NSException& exception) {
      return exception.reason();
    }
  };
  EXPECT_EQ(refused("quoll://compose#a?b=c"), "the command URL has a \"#\" before its \"?\"");
  EXPECT_EQ(refused("http://compose"),
            "this is not a command URL of the form quoll://COMMAND?QUERY");
  for (const char* const url : {"quoll://compose?a=%zz", "quoll://compose?a=%2",
                                "quoll://compose?a=b#c#d", "quoll://compose?a=b c"}) {
    EXPECT_EQ(refused(url),
              "the command URL has a \"%\" that begins no escape, a second \"#\", or a character "
              "that has to be escaped");
  }
  for (const char* const url : {"quoll://compose?a=%FF", "quoll://compose?%FF=a"}) {
    EXPECT_EQ(refused(url),
              "a part of the command URL is not UTF-8 text once its escapes are decoded");
  }
}

TEST(ReceivedCommand, AttachmentsHaveTheOrderOfTheirNumbers) {
  const ReceivedCommand read = read_received_command(
      "quoll://compose?attachment_10=d&attachment_x=g&attachment_2=b&attachment_2=c&attachment_0=a"
      "&attachment_=h&attachment_99999999999999999999=i&attachment_11=e&Attachment_1=no&other=o");
  EXPECT_EQ(read.attachments, (std::vector<std::string>{"a", "c", "d", "e", "g", "h", "i"}));
  const foundation::Value other = read.parameters.objectForKey("other");
  ASSERT_NE(other.text(), nullptr);
  EXPECT_EQ(*other.text(), "o");
}

}  // namespace
}  // namespace quoll
