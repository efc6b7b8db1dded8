#include "apps/compose/writer_result.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "apps/compose/compose_error.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"
#include "tests/support/temporary_folder.h"

namespace quoll::compose {
namespace {

const std::string kMessage = std::string(kMessageBeginning) + " a\r\n\r\nb";

class WriterResult : public ::testing::Test {
 protected:
  /// A file with these bytes, which stands at their end.
  posix::UniqueFd file(const std::string& bytes) {
    const std::string path = folder_.write("file", bytes);
    posix::UniqueFd opened(open(path.c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_GE(lseek(opened.get(), 0, SEEK_END), 0);
    return opened;
  }
  [[nodiscard]] std::string content() const { return test::read_file(folder_.path("file")); }

  /// What is written for these fields.
  std::string written(const DraftFields& fields, const std::string& message = kMessage) {
    append_fields(file(message).get(), fields);
    return content();
  }
  void expect_refused(const std::string& bytes, const std::string& reason) {
    EXPECT_THROW(static_cast<void>(take_fields(file(bytes).get())), ComposeError) << reason;
  }
  /// The end of a file, as whoever wrote it likes it.
  static std::string with_record(const std::string& before, std::uint64_t message,
                                 std::uint64_t fields) {
    std::string bytes = before + "quolleml" + std::string(24, '\0');
    std::memcpy(bytes.data() + before.size() + 8, &message, 8);
    std::memcpy(bytes.data() + before.size() + 16, &fields, 8);
    return bytes;
  }

  test::TemporaryFolder folder_;
};

TEST_F(WriterResult, FieldsComeBackAndTheMessageStays) {
  for (const DraftFields& fields : {
           DraftFields{},
           DraftFields{.subject = "S \u00FC",
           .to = {"a@x", "Ann <b@x>"},
           .cc = {},
           .bcc = {"c@x"},
           .not_plain = 3,
           .text = "one\n\ttwo\n"},
       }) {
    append_fields(file(kMessage).get(), fields);
    const posix::UniqueFd read(open(folder_.path("file").c_str(), O_RDWR | O_CLOEXEC));
    const DraftFields back = take_fields(read.get());
    EXPECT_EQ(back.subject, fields.subject);
    EXPECT_EQ(back.to, fields.to);
    EXPECT_EQ(back.cc, fields.cc);
    EXPECT_EQ(back.bcc, fields.bcc);
    EXPECT_EQ(back.not_plain, fields.not_plain);
    EXPECT_EQ(back.text, fields.text);
    EXPECT_EQ(content(), kMessage);
  }
}

TEST_F(WriterResult, WhatEndsTooEarlyIsRefused) {
  const std::string whole = written({.subject = "S", .to = {"a@x"}, .text = "t"});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    expect_refused(whole.substr(0, size), "cut at " + std::to_string(size));
  }
  for (std::size_t from = 1; from < whole.size(); ++from) {
    expect_refused(whole.substr(from), "begun at " + std::to_string(from));
  }
}

TEST_F(WriterResult, LengthsAreNotBelieved) {
  const std::string fields("\0\0\0\0\0", 5);
  const std::uint64_t size = kMessage.size();
  const posix::UniqueFd good = file(with_record(kMessage + fields, size, fields.size()));
  EXPECT_EQ(take_fields(good.get()).subject, "");
  struct Row {
    const char* reason;
    std::uint64_t message, fields;
  };
  for (const Row& row : {
           Row{"more fields than there are", size, fields.size() + 1},
           Row{"fewer", size, fields.size() - 1},
           Row{"a message longer than the file", size + 100, fields.size()},
           Row{"lengths that overflow to the right sum", size + 6, ~std::uint64_t{0}},
           Row{"a huge message", ~std::uint64_t{0}, fields.size()},
           Row{"no message", 0, size + fields.size()},
           Row{"a message that ends early", 10, size - 10 + fields.size()},
       }) {
    expect_refused(with_record(kMessage + fields, row.message, row.fields), row.reason);
  }
  expect_refused(with_record(kMessage + fields + "more", size, fields.size()),
                 "something behind the fields");
  std::string other_sign = with_record(kMessage + fields, size, fields.size());
  other_sign[kMessage.size() + fields.size()] = 'Q';
  expect_refused(other_sign, "another sign");
}

TEST_F(WriterResult, MoreFieldsThanADraftHasAreNotRead) {
  constexpr std::uint64_t kMost = std::uint64_t{128} << 20;
  const posix::UniqueFd large = file(kMessage + std::string(1, '\0'));
  const std::string piece(std::size_t{1} << 20, 'x');
  for (std::uint64_t written = 0; written < kMost; written += piece.size()) {
    ASSERT_TRUE(posix::write_all(large.get(), piece));
  }
  const std::string end = with_record(std::string(4, '\0'), kMessage.size(), kMost + 5);
  ASSERT_TRUE(posix::write_all(large.get(), end));
  EXPECT_THROW(static_cast<void>(take_fields(large.get())), ComposeError);
}

// A writer that was taken over could have the receiver use up all memory, at each start.
TEST_F(WriterResult, AMillionAddressesAreRead) {
  constexpr std::size_t kMost = 1'000'000;
  DraftFields fields{.to = std::vector<std::string>(kMost - 2, "a@b"), .cc = {"c@d"}};
  fields.bcc = {"e@f"};
  append_fields(file(kMessage).get(), fields);
  const posix::UniqueFd read(open(folder_.path("file").c_str(), O_RDWR | O_CLOEXEC));
  EXPECT_EQ(take_fields(read.get()).to.size(), kMost - 2);
  fields.bcc.emplace_back("g@h");
  expect_refused(written(fields), "one more");
}

TEST_F(WriterResult, TheMessageBeginsAsItMust) {
  const std::string fields("\0\0\0\0\0", 5);
  for (const std::string message :
       {"", "X", "From: a@x\r\n", "X-Unsent: 1\r\nBcc: e@x\r\n", "X-Unsent: 1\nSubject: a"}) {
    expect_refused(with_record(message + fields, message.size(), fields.size()), message);
  }
}

TEST_F(WriterResult, OnlyPlainTextIsTaken) {
  for (const std::string bad : {"a\nb", "a\tb", "a\rb", "a\x1B", "a\x7F", "\u0085", "\u2028",
                                "\xFF", "\xC3", "\xED\xA0\x80"}) {
    expect_refused(written({.subject = bad}), "subject");
    expect_refused(written({.to = {"a@x", bad}}), "to");
    expect_refused(written({.cc = {bad}}), "cc");
    expect_refused(written({.bcc = {bad, "a@x"}}), "bcc");
    if (bad != "a\nb" && bad != "a\tb") {
      expect_refused(written({.text = bad}), "text");
    }
  }
  expect_refused(written({.subject = std::string("a\0b", 3)}), "a zero byte makes one field more");
}

TEST_F(WriterResult, OnlyPlainAddressesAreTaken) {
  for (const std::string good :
       {"a@x", "a.b-c@x.org", "a@[192.0.2.1]", "j@b\u00FCcher.example", "Ann Lee <a@x>",
        "\"Lee, Ann <b@y>\" <a@x>", "\"A \\\"B\\\"\" <a@x>", "J\u00FCrg <j@x>"}) {
    append_fields(file(kMessage).get(), {.to = {good}});
    const posix::UniqueFd read(open(folder_.path("file").c_str(), O_RDWR | O_CLOEXEC));
    EXPECT_EQ(take_fields(read.get()).to, std::vector<std::string>{good});
  }
  for (const std::string bad : {"a",
                                "@x",
                                "a@",
                                "-a@x",
                                "--attach=/etc/passwd",
                                "-a@x <a@x>",
                                "Ann <-a@x>",
                                "a b@x",
                                "a,b@x",
                                "a@x,b@y",
                                "a@x, b@y",
                                "a@x;b@y",
                                "\"a b\"@x",
                                "a@[1 2]",
                                "<a@x>",
                                " <a@x>",
                                "Ann  <a@x>",
                                "Ann <a@x> <b@y>",
                                "Ann <a@x",
                                "A,B <a@x>",
                                "\"A\" B\" <a@x>",
                                "\"A\\\" <a@x>",
                                "a@x <b@y>",
                                "=?utf-8?q?a?= <a@x>",
                                "=?a@x",
                                "A\u202Eb <a@x>",
                                "a\u200B@x",
                                "a@x\u00AD",
                                "file:///etc/passwd",
                                "mailto:a@x"}) {
    expect_refused(written({.to = {bad}}), bad);
    expect_refused(written({.cc = {"a@x", bad}}), bad);
    expect_refused(written({.bcc = {bad}}), bad);
  }
  expect_refused(written({.subject = "=?utf-8?q?a=0Ab?="}), "a subject that would be decoded");
}

}  // namespace
}  // namespace quoll::compose
