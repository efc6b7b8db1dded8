// What the extension of a browser may say, and what is made of it.
#include "apps/share/request/browser_request.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "apps/share/request/browser_port.h"
#include "quoll/foundation/base64.h"
#include "quoll/linux/image_helper/memory_file.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {
namespace {

using Step = BrowserRequest::Step;

constexpr const char* kPng = "\x89PNG\r\n\x1a\nand so on";

std::string base64(const std::string& text) {
  return foundation::base64_encode(text);
}

Step taken(std::initializer_list<std::string> frames) {
  BrowserRequest request;
  Step step = Step::kMore;
  for (const std::string& frame : frames) {
    step = request.take(frame);
  }
  return step;
}

TEST(BrowserRequest, APageIsALinkWithATitle) {
  BrowserRequest request;
  EXPECT_EQ(request.take(R"({"version":1})"), Step::kMore);
  EXPECT_EQ(request.take(R"({"title":"A page","link":"https://example.org/?a=1&b=2"})"),
            Step::kMore);
  EXPECT_EQ(request.take(R"({"end":true})"), Step::kEnd);
  const ShareRequest made = request.request();
  EXPECT_EQ(made.title, "A page");
  EXPECT_EQ(made.links, std::vector<std::string>{"https://example.org/?a=1&b=2"});
  EXPECT_TRUE(made.items.empty());
  EXPECT_TRUE(made.left_out.empty());
}

TEST(BrowserRequest, TextsComeInPieces) {
  BrowserRequest request;
  EXPECT_EQ(request.take(R"({"version":1,"html":"<b>on"})"), Step::kMore);
  EXPECT_EQ(request.take(R"({"html":"e</b>","text":"o"})"), Step::kMore);
  EXPECT_EQ(request.take(R"({"text":"ne","end":true})"), Step::kEnd);
  const ShareRequest made = request.request();
  EXPECT_EQ(made.html, "<b>one</b>");
  EXPECT_EQ(made.text, "one");
}

TEST(BrowserRequest, PicturesComeInPiecesAndOneAfterAnother) {
  BrowserRequest request;
  EXPECT_EQ(request.take(R"({"version":1,"picture":")" + base64(std::string(kPng).substr(0, 3)) +
                         R"("})"),
            Step::kMore);
  EXPECT_EQ(request.take(R"({"picture":")" + base64(std::string(kPng).substr(3)) + R"("})"),
            Step::kMore);
  EXPECT_EQ(request.take(R"({"next":true,"picture":")" + base64("GIF89a") + R"("})"), Step::kMore);
  EXPECT_EQ(request.take(R"({"end":true})"), Step::kEnd);
  const ShareRequest made = request.request();
  ASSERT_EQ(made.descriptor_items.size(), 2U);
  struct stat status {};
  ASSERT_EQ(fstat(made.descriptor_items[0].descriptor.get(), &status), 0);
  EXPECT_EQ(static_cast<std::size_t>(status.st_size), std::string(kPng).size());
}

TEST(BrowserRequest, BytesThatAreNoPictureAreLeftOut) {
  BrowserRequest request;
  EXPECT_EQ(request.take(R"({"version":1,"picture":")" + base64("#!/bin/sh") + R"(","end":true})"),
            Step::kEnd);
  const ShareRequest made = request.request();
  EXPECT_TRUE(made.descriptor_items.empty());
  ASSERT_EQ(made.left_out.size(), 1U);
  EXPECT_EQ(made.left_out[0].what, "the picture");
}

TEST(BrowserRequest, NoPathAndNoFileUrlIsTaken) {
  for (const char* const given :
       {"file:///etc/passwd", "FILE:///etc/passwd", " file:///etc/passwd", "/etc/passwd",
        "etc/passwd", "-", "", "~/x", "www.example.org", "data:text/plain,x", "javascript:alert(1)",
        "blob:https://example.org/1", "view-source:https://example.org/", "quoll://compose?",
        "C:\\x", "https:", "https: //example.org/"}) {
    BrowserRequest request;
    EXPECT_EQ(request.take(R"({"version":1,"end":true,"link":)" +
                           ("\"" +
                            [&] {
                              std::string escaped(given);
                              const std::size_t at = escaped.find('\\');
                              return at == std::string::npos ? escaped : escaped.insert(at, "\\");
                            }()) +
                           "\"}"),
              Step::kEnd)
        << given;
    const ShareRequest made = request.request();
    EXPECT_TRUE(made.links.empty()) << given;
    EXPECT_TRUE(made.items.empty()) << given;
    ASSERT_EQ(made.left_out.size(), 1U) << given;
    EXPECT_EQ(made.left_out[0].why, "it is no link to the net") << given;
  }
}

TEST(BrowserRequest, ALinkThatIsAlsoThePathOfAFileStaysALink) {
  for (const char* const link : {"https://example.org/", "mailto:a@example.org", "tel:+1",
                                 "ftp://example.org/", "HTTP://x/"}) {
    BrowserRequest request;
    EXPECT_EQ(request.take(R"({"version":1,"link":")" + std::string(link) + R"(","end":true})"),
              Step::kEnd);
    EXPECT_EQ(request.request().links, std::vector<std::string>{link});
  }
}

TEST(BrowserRequest, WhatTheBrowserCouldNotGiveIsToldInOurWords) {
  for (const char* const code : {"address", "pages", "picture", "selection", "styles", "tabs"}) {
    BrowserRequest request;
    EXPECT_EQ(request.take(R"({"version":1,"missing":")" + std::string(code) + R"(","end":true})"),
              Step::kEnd);
    EXPECT_EQ(request.request().left_out.size(), 1U) << code;
  }
  EXPECT_EQ(taken({R"({"version":1,"missing":"the bank: call 1234"})"}), Step::kRefused);
}

TEST(BrowserRequest, AMinusIsAText) {
  BrowserRequest request;
  EXPECT_EQ(request.take(R"({"version":1,"title":"-","text":"-","html":"-","end":true})"),
            Step::kEnd);
  const ShareRequest made = request.request();
  EXPECT_NE(made.title, "-");
  EXPECT_NE(made.text, "-");
  EXPECT_NE(made.html, "-");
}

TEST(BrowserRequest, AnotherVersionIsSaid) {
  EXPECT_EQ(taken({R"({"version":2})"}), Step::kOtherVersion);
  EXPECT_EQ(taken({R"({"version":0,"end":true})"}), Step::kOtherVersion);
}

TEST(BrowserRequest, WhatIsNoFrameIsRefused) {
  const std::string deep = std::string(10'000, '[') + std::string(10'000, ']');
  for (const std::string& frame : {std::string(),
                                   std::string("{"),
                                   std::string("[]"),
                                   std::string("1"),
                                   std::string("\"end\""),
                                   std::string("null"),
                                   std::string("{}"),
                                   std::string(R"({"end":true})"),
                                   std::string(R"({"version":1}{})"),
                                   std::string(R"({"version":1.0})"),
                                   std::string(R"({"version":-1})"),
                                   std::string(R"({"version":"1"})"),
                                   std::string(R"({"version":1,"version":1})"),
                                   std::string(R"({"version":1,"path":"/etc/passwd"})"),
                                   std::string(R"({"version":1,"title":"a","title":"b"})"),
                                   std::string(R"({"version":1,"title":null})"),
                                   std::string(R"({"version":1,"title":{}})"),
                                   std::string(R"({"version":1,"title":["a"]})"),
                                   std::string(R"({"version":1,"link":1})"),
                                   std::string(R"({"version":1,"end":false})"),
                                   std::string(R"({"version":1,"end":1})"),
                                   std::string(R"({"version":1,"picture":"A"})"),
                                   std::string(R"({"version":1,"picture":"AA=A"})"),
                                   std::string(R"({"version":1,"picture":"AA A"})"),
                                   std::string(R"({"version":1,"title":"a\u0000b"})"),
                                   std::string("{\"version\":1,\"title\":\"\xff\"}"),
                                   std::string(R"({"version":1,"title":"\ud800"})"),
                                   std::string(R"({"version":1,)") + R"("title":)" + deep + "}",
                                   deep,
                                   "{\"a\":" + deep + "}"}) {
    EXPECT_EQ(taken({frame}), Step::kRefused) << frame.substr(0, 60);
  }
  EXPECT_EQ(taken({R"({"version":1})", R"({"version":1})"}), Step::kRefused);
  EXPECT_EQ(taken({R"({"version":1,"title":"a"})", R"({"title":"b"})"}), Step::kRefused);
}

TEST(BrowserRequest, TextsAndLinksHaveAnEnd) {
  const std::string mebibyte(std::size_t{1} << 20U, 'a');
  BrowserRequest request;
  EXPECT_EQ(request.take(R"({"version":1})"), Step::kMore);
  int pieces = 0;
  while (request.take(R"({"text":")" + mebibyte + R"("})") == Step::kMore) {
    ASSERT_LT(++pieces, 100);
  }
  EXPECT_EQ(pieces, 65);

  BrowserRequest links;
  EXPECT_EQ(links.take(R"({"version":1})"), Step::kMore);
  for (std::size_t count = 0; count < kMostLinks; ++count) {
    ASSERT_EQ(links.take(R"({"link":"https://example.org/"})"), Step::kMore);
  }
  EXPECT_EQ(links.take(R"({"link":"https://example.org/"})"), Step::kRefused);
}

TEST(BrowserRequest, PicturesHaveAnEnd) {
  const std::string frame =
      R"({"picture":")" + std::string(std::size_t{12} << 20U, 'A') + R"("})";  // 9 MiB
  BrowserRequest request;
  EXPECT_EQ(request.take(R"({"version":1})"), Step::kMore);
  int pieces = 0;
  while (request.take(frame) == Step::kMore) {
    ASSERT_LT(++pieces, 100);
  }
  EXPECT_EQ(pieces, 7);  // 63 MiB
}

// Each would take memory for the words that say why it is left out.
TEST(BrowserRequest, PicturesThatAreNoneHaveAnEndToo) {
  for (const std::string& bytes : {std::string(), std::string("no picture")}) {
    const std::string frame = R"({"next":true,"picture":")" + base64(bytes) + R"("})";
    BrowserRequest request;
    EXPECT_EQ(request.take(R"({"version":1})"), Step::kMore);
    std::size_t pieces = 0;
    while (request.take(frame) == Step::kMore) {
      ASSERT_LE(++pieces, kMostPictures);
    }
    EXPECT_EQ(pieces, kMostPictures);
  }
}

// A frame that claims `length` bytes and has `size` of them.
BrowserPort::Received received(std::uint32_t length, std::size_t size) {
  const posix::UniqueFd file = image_helper::make_memory_file();
  std::string bytes(sizeof length + size, '{');
  std::memcpy(bytes.data(), &length, sizeof length);
  EXPECT_TRUE(posix::write_all(file.get(), bytes));
  EXPECT_EQ(lseek(file.get(), 0, SEEK_SET), 0);
  std::string frame;
  return BrowserPort(file.get(), -1).receive(frame);
}

TEST(BrowserPort, AFrameIsWholeAndHas16MiBAtMost) {
  using Received = BrowserPort::Received;
  constexpr std::uint32_t kMost = std::uint32_t{16} << 20U;
  EXPECT_EQ(received(2, 2), Received::kFrame);
  EXPECT_EQ(received(kMost, kMost), Received::kFrame);
  EXPECT_EQ(received(kMost + 1, kMost + 1), Received::kDamaged);
  EXPECT_EQ(received(UINT32_MAX, 2), Received::kDamaged);
  EXPECT_EQ(received(3, 2), Received::kDamaged);
}

}  // namespace
}  // namespace quoll::share
