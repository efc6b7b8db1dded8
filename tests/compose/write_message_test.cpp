#include "apps/compose/write_message.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <system_error>

#include "apps/compose/mime_parts.h"
#include "apps/compose/writer_result.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/percent.h"
#include "quoll/linux/gio/handles.h"
#include "tests/compose/taken_folder.h"

namespace quoll::compose {
namespace {

using test::TakenFolder;

struct Written {
  DraftFields fields;
  std::string message;

  [[nodiscard]] bool has(const std::string& text) const {
    return message.find(text) != std::string::npos;
  }
};

Written write(const TakenFolder& folder) {
  prepare_to_write();
  write_message(folder.taken(), folder.output());
  return {.fields = take_fields(folder.output()), .message = folder.written()};
}

Written write(const std::string& query) {
  return write(TakenFolder("quoll://compose?" + query));
}

TEST(WriteMessage, HeadersAreInOrderAndFolded) {
  const Written draft = write("to=a%40x%3BAnn%20%3Cb%40x%3E%3B&subject=A%20title&from=me%40x");
  EXPECT_TRUE(
      draft.message.starts_with("X-Unsent: 1\r\nSubject: A title\r\nFrom: me@x\r\n"
                                "To: a@x, Ann <b@x>\r\nMIME-Version: 1.0\r\n"))
      << draft.message;
  EXPECT_EQ(draft.fields.subject, "A title");
  EXPECT_EQ(draft.fields.to, (std::vector<std::string>{"a@x", "Ann <b@x>"}));
  const Written many = write("to=" + foundation::percent_encode("recipient@example.org;") +
                             foundation::percent_encode("recipient@example.org;") +
                             foundation::percent_encode("recipient@example.org;") +
                             foundation::percent_encode("recipient@example.org;"));
  EXPECT_TRUE(
      many.has("To: recipient@example.org, recipient@example.org, recipient@example.org,"
               "\r\n recipient@example.org\r\n"))
      << many.message;
}

TEST(WriteMessage, NoFieldAddsAHeader) {
  for (const char* const key : {"subject", "from", "to", "cc", "bcc"}) {
    for (const char* const value :
         {"a%0D%0ABcc:%20evil@x", "a%0ABcc:%20evil@x", "a%0D%0A%0D%0Abody",
          "=?utf-8?b?YQ0KQmNjOiBldmlsQHg=?=%20%3Ca@x%3E", "%C2%85Bcc:evil", "%E2%80%A8Bcc:evil",
          "%22a%0D%0ABcc:evil@x%22%20%3Cb@x%3E"}) {
      const Written draft = write(std::string(key) + "=" + value);
      EXPECT_FALSE(draft.has("\nBcc:") && std::string(key) != "bcc") << key << value;
      EXPECT_FALSE(draft.has("\nbody")) << key << value;
    }
  }
}

TEST(WriteMessage, ManyRecipientsAreWritten) {
  std::string to;
  for (int i = 0; i < 100'000; ++i) {
    to += "recipient" + std::to_string(i) + "@example.org;";
  }
  const Written draft = write("to=" + foundation::percent_encode(to));
  EXPECT_EQ(draft.fields.to.size(), 100'000U);
  EXPECT_TRUE(draft.has("recipient0@example.org,"));
  EXPECT_TRUE(draft.has(" recipient99999@example.org\r\n"));
}

TEST(WriteMessage, ADraftOfFilesIsNamedAfterThem) {
  TakenFolder folder("quoll://compose?");
  folder.add(0, "a\nb.txt", "1");
  EXPECT_EQ(write(folder).fields.subject, "a b.txt");
  folder.open_both();
  folder.add(7, "c", "2");
  folder.add(10, "d", "3");
  EXPECT_EQ(write(folder).fields.subject, "a b.txt and 2 more");
}

TEST(WriteMessage, FilesStandInTheOrderOfTheirNumbers) {
  TakenFolder folder;
  for (const unsigned number : {10U, 9U, 2U, 0U}) {
    folder.add(number, "n" + std::to_string(number), "x");
  }
  const Written draft = write(folder);
  std::size_t at = 0;
  for (const char* const name : {"filename=n0", "filename=n2", "filename=n9", "filename=n10"}) {
    at = draft.message.find(name, at);
    ASSERT_NE(at, std::string::npos) << name << draft.message;
  }
}

TEST(WriteMessage, TextsAreCleanForAClientAndWholeInTheFile) {
  const Written draft =
      write("plainBody=a%00%1Bb%0D%0Ac%C2%9B&subject=%3D%3Futf-8%3FQ%3F%3D0A%3F%3D");
  EXPECT_EQ(draft.fields.text, "a\u2400\u241Bb\nc\uFFFD");
  EXPECT_TRUE(draft.has("a=00=1Bb\r\nc=C2=9B")) << draft.message;
  EXPECT_EQ(draft.fields.subject, "= ?utf-8?Q?=0A?=");
  EXPECT_TRUE(draft.has("Subject: =?UTF-8?Q?=3D=3Futf=2D8=3FQ=3F=3D0A=3F=3D?=\r\n"));
}

TEST(WriteMessage, WhatCannotBeReadIsThrown) {
  EXPECT_THROW(write("subject=%FF"), foundation::NSException);
  EXPECT_THROW(write(TakenFolder("nothing")), foundation::NSException);
  const TakenFolder folder;
  std::filesystem::remove(folder.around().path("taken/command"));
  EXPECT_THROW(write(folder), std::system_error);
  const TakenFolder link;
  std::filesystem::create_directories(link.around().path("taken/files/0"));
  std::filesystem::create_symlink("../../command", link.around().path("taken/files/0/link"));
  EXPECT_THROW(write(link), std::system_error);
}

TEST(WriteMessage, AFileHasTheSizeThatItHadWhenItWasTaken) {
  for (const std::uint64_t size : {0U, 6U, 8U}) {
    TakenFolder folder;
    folder.add(0, "file", "content");
    folder.note_size(0, size);
    EXPECT_THROW(write(folder), FileHasChanged) << size;
  }
  TakenFolder unknown;
  unknown.add(0, "file", "content");
  std::filesystem::remove(unknown.around().path("taken/sizes"));
  EXPECT_THROW(write(unknown), std::system_error);
}

// Of a file that grows while it is read, no more is read.
TEST(WriteMessage, AnAttachmentHasNoMoreThanWasTaken) {
  prepare_to_write();
  TakenFolder folder;
  folder.add(0, "file", "content");
  const posix::UniqueFd file(open(folder.around().path("taken/files/0/file").c_str(), O_RDONLY));
  const auto part = attachment_part("file", file.get(), 3);
  const gio::TextHandle text(g_mime_object_to_string(part.get(), nullptr));
  EXPECT_NE(std::string(text.get()).find("\nY29u\n"), std::string::npos) << text.get();
}

TEST(WriteMessage, WhatDoesNotFitIsThrownWhereverItEnds) {
  TakenFolder folder;
  folder.add(0, "file", std::string(50'000, 'x'));
  const std::size_t whole = [&] {
    write_message(folder.taken(), folder.output());
    return folder.written().size();
  }();
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  for (std::size_t most = 0; most < whole; most += 997) {
    folder.open_both();
    const rlimit less{most, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &less);
    try {
      write_message(folder.taken(), folder.output());
      ADD_FAILURE() << most << " of " << whole;
    } catch (const std::system_error& error) {
      EXPECT_EQ(error.code().value(), EFBIG) << most;
    }
  }
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
}

}  // namespace
}  // namespace quoll::compose
