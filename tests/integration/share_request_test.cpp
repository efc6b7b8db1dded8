// What programs ask of the service, and what they are answered.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <list>

#include "tests/integration/mixed_files.h"
#include "tests/integration/share_home.h"
#include "tests/integration/share_service.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

TEST_F(ShareService, FilesArriveInTheOrderInWhichTheyWerePicked) {
  const std::string record = home_.bus.path("record");
  home_.bus.add_service(kReceiver,
                        std::string(RECEIVER_DOUBLE) + " bus " + kReceiver + " record " + record);
  const auto picked = write_mixed_files(home_.bus.path(""));
  for (int time = 0; time < order_trials(); ++time) {
    Request request;
    ASSERT_EQ(share(request.uris(picked)).code, 0);
    ASSERT_EQ(recorded_names(record), names_of(picked)) << "time " << time;
  }
}

TEST_F(ShareService, EverythingThatAProgramMayGive) {
  install_receiver();
  const std::string file = write("by uri.txt", "by uri");
  const std::string another = write("another", "by descriptor");
  Request request;
  request.text("title", "A title")
      .text("html", "some <b>bold</b> words")
      .uris({file, "https://example.org/"})
      .bytes("../na\xC3\xAFve, 1.pdf", "Application/PDF; x=y", "by bytes")
      .descriptor("of a descriptor.txt", open_file(another, O_RDONLY));
  const Answer answer = share(request);
  EXPECT_EQ(answer.told, "");
  EXPECT_EQ(answer.code, 0);
  const std::string draft = drafts(1);
  for (const char* part : {"A title", "bold", "https://example.org/", "by uri.txt",
                           "na\\u00efve, 1.pdf", "of a descriptor.txt"}) {
    EXPECT_NE(draft.find(part), std::string::npos) << part << '\n' << draft;
  }
}

TEST_F(ShareService, WhatWasSaidOfTheDraftIsInIt) {
  install_receiver();
  Request request;
  const Answer answer = share(request.texts("to", {"a@example.org", "-"})
                                  .texts("cc", {"C D <c@example.org>"})
                                  .text("subject", "-")
                                  .bytes("a.txt", "", "x"));
  EXPECT_EQ(answer.code, 0) << answer.told;
  const std::string draft = drafts(1);
  for (const char* const part :
       {"header To \"a@example.org", "header Cc \"C D <c@example.org>\"", "header Subject \"-\""}) {
    EXPECT_NE(draft.find(part), std::string::npos) << part << '\n' << draft;
  }
}

TEST_F(ShareService, AThousandRecipients) {
  const std::string record = home_.bus.path("record");
  home_.bus.add_service(kReceiver,
                        std::string(RECEIVER_DOUBLE) + " bus " + kReceiver + " record " + record);
  Request request;
  const std::vector<std::string> all(1000, "a@x");
  EXPECT_EQ(share(request.texts("to", all).texts("cc", all).text("text", "words")).code, 0);
  const auto message = message_of(read_file(record).substr(std::string("uri ").size()));
  const std::string recipients = foundation::Value(message->toString()).description();
  EXPECT_EQ(recipients.size(), 4000U);
  EXPECT_EQ(message->ccString(), foundation::Value(recipients));
}

TEST_F(ShareService, AnEmptyTextIsNone) {
  install_receiver();
  Request request;
  const Answer answer = share(request.text("title", "").text("html", "").text("text", "words"));
  EXPECT_EQ(answer.code, 0) << answer.told;
  EXPECT_EQ(answer.told, "");
}

TEST_F(ShareService, WhatCannotBeSharedIsToldAndKeepsNothingBack) {
  install_receiver();
  Request request;
  request.text("text", "words")
      .uris({"/nowhere"})
      .descriptor("folder", open_file("/", O_RDONLY))
      .descriptor("no-rights", open_file("/etc", O_PATH))
      .descriptor("to-write", open_file("/dev/null", O_WRONLY))
      .descriptor("empty", open_file("/dev/null", O_RDONLY))
      .bytes("", "", "");
  const Answer answer = share(request);
  EXPECT_EQ(answer.code, 3);
  EXPECT_EQ(answer.told,
            "left out: /nowhere: no such file\n"
            "left out: folder: is a directory\n"
            "left out: no-rights: bad file descriptor\n"
            "left out: to-write: bad file descriptor\n"
            "left out: empty: it is empty\n"
            "left out: an item without a name: it is empty");
  EXPECT_NE(drafts(1).find("words"), std::string::npos);
}

TEST_F(ShareService, NobodyToReceive) {
  Request request;
  const Answer answer = share(request.text("text", "words"));
  EXPECT_EQ(answer.code, 1);
  EXPECT_EQ(answer.told,
            "not opened: no mail application answers; install the mail application or "
            "quoll-compose");
}

// As arguments they would be longer than a command line may be.
TEST_F(ShareService, ThousandsOfNamesAndALongAnswer) {
  install_receiver();
  const std::string name = "/nowhere/" + std::string(600, 'n');
  Request request;
  const Answer answer =
      share(request.text("text", "words").uris(std::vector<std::string>(5000, name)));
  EXPECT_EQ(answer.code, 3);
  EXPECT_LE(answer.told.size(), std::size_t{65536} + 4);
  EXPECT_TRUE(answer.told.ends_with("n: no such file\n...")) << answer.told;
}

TEST_F(ShareService, RequestsThatAreNone) {
  std::list<std::pair<Request, std::string>> rows;
  const auto row = [&](const std::string& error) -> Request& {
    rows.emplace_back(Request(), error);
    return rows.back().first;
  };
  row("there is nothing to share");
  row("there is nothing to share").text("title", "alone");
  row("there is nothing to share").text("text", "").text("html", "");
  row("there is nothing to share").text("subject", "alone").texts("to", {"a@x"});
  row("\"bcc\" is not known").texts("bcc", {"a@x"});
  row("\"to\" is not of the type as").text("to", "a@x");
  row("the recipient \"a@x;b@x\": it has a semicolon; give each address by itself")
      .texts("cc", {"a@x;b@x"});
  row("the recipient \"a\\nb\": it has a line break or a control character")
      .texts("to", {"c@x", "a\nb"});
  row("1001 recipients in \"to\", and 1000 are the most")
      .texts("to", std::vector<std::string>(1001, "a@x"));
  row("\"text\" is not of the type s").add("text", g_variant_new_int32(1));
  row("\"uris\" is not of the type as").text("uris", "https://h/");
  row("\"items\" is not of the type aa{sv}").text("items", "x");
  row("\"bytes\" is not of the type ay").item("n", "", "bytes", g_variant_new_string("x"));
  row("\"descriptor\" is not of the type h").item("n", "", "descriptor", g_variant_new_int32(0));
  row("a descriptor is not there").item("n", "", "descriptor", g_variant_new_handle(0));
  row("a descriptor is not there").item("n", "", "descriptor", g_variant_new_handle(-1));
  row("a descriptor is not there").item("n", "", "descriptor", g_variant_new_handle(G_MAXINT32));
  row("an item has neither \"bytes\" nor \"descriptor\"")
      .item("n", "", "type", g_variant_new_string("a/b"));
  row("\"path\" is not known of items").item("", "", "path", g_variant_new_string("/etc/passwd"));
  row("a name or a type is longer than 255 bytes").bytes(std::string(256, 'n'), "", "x");
  row("\"a:b\" is no media type").bytes("n", "a:b", "x");
  row("20001 links and files, and 20000 are the most")
      .uris(std::vector<std::string>(20'001, "a:b"));
  row("20001 links and files, and 20000 are the most")
      .uris(std::vector<std::string>(20'000, "a:b"))
      .uris({"a:b"});
  Request& twice = row("66 items, and 64 are the most");
  for (int number = 0; number < 66; ++number) {
    twice.bytes("n", "", "x");
    if (number == 32) {
      twice.end_of_items();
    }
  }
  Request& many = row("65 items, and 64 are the most");
  for (int number = 0; number < 65; ++number) {
    many.bytes("n", "", "x");
  }
  for (auto& [request, error] : rows) {
    const Answer answer = share(request);
    EXPECT_EQ(answer.code, -1) << error;
    EXPECT_EQ(answer.told, error);
  }
}

}  // namespace
}  // namespace quoll::test
