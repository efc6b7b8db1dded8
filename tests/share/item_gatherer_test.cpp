#include "quoll/share/item_gatherer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "quoll/container/staging.h"
#include "quoll/foundation/exception.h"
#include "quoll/platform/images.h"
#include "tests/share/scripted_share.h"

namespace quoll {
namespace {

using foundation::Error;
using foundation::NSURL;
using foundation::Value;
using platform::NSExtensionContext;
using platform::QueuePriority;
using test::item;
using test::provider;

constexpr double kInterval = 0.10000000149011612;

Value link(std::string_view text) {
  return NSURL::URLWithString(text);
}
Value file(std::string_view path) {
  return NSURL::file_url(path, false);
}

/// Gathers on the test's queue and answers the message once the completion has run.
std::shared_ptr<ExtensionMessage> gather(test::ShareTest& share, NSExtensionContext::Items items,
                                         const std::string& service = "Share") {
  std::shared_ptr<ExtensionMessage> gathered;
  int completions = 0;
  ExtensionUtilities::ShareInit(service);
  ExtensionUtilities::GetItemForExtension(
      std::make_shared<test::ScriptedContext>(std::move(items)), service,
      [&](const std::shared_ptr<ExtensionMessage>& message, const std::optional<Error>& error) {
        EXPECT_FALSE(error);
        gathered = message;
        ++completions;
      });
  share.queue->wait();
  EXPECT_EQ(completions, 1);
  return gathered;
}

std::vector<std::string> attachments(const ExtensionMessage& message) {
  std::vector<std::string> paths;
  for (const Value& path : message.attachments()) {
    paths.push_back(*path.text());
  }
  return paths;
}

/// The lines that the share itself logged, without those of the first emptying of the folder.
std::vector<std::string> lines(const test::ShareTest& share) {
  std::vector<std::string> out;
  for (const std::string& line : share.log->lines()) {
    if (!line.starts_with("shareInit")) {
      out.push_back(line);
    }
  }
  return out;
}

TEST(Gathering, NothingSharedIsOnePause) {
  test::ShareTest share;
  const auto message = gather(share, {});
  EXPECT_EQ(share.clock->sleeps(), std::vector<double>{kInterval});
  EXPECT_TRUE(message->subject().is_null());
  EXPECT_EQ(message->htmlBody(), "");
  EXPECT_TRUE(message->attachments().empty());
  EXPECT_EQ(share.queue->priorities(), std::vector{QueuePriority::kBackground});
}

TEST(Gathering, AMissingContextSharesNothing) {
  test::ShareTest share;
  bool completed = false;
  ExtensionUtilities::GetItemForExtension(nullptr, "Share",
                                          [&](const auto&, const auto&) { completed = true; });
  share.queue->wait();
  EXPECT_TRUE(completed);
}

TEST(Gathering, ReturnsBeforeAnythingIsRead) {
  test::ShareTest share;
  const auto held = std::make_shared<test::HeldQueue>();
  const platform::ScopedDesktop desktop({.log = share.log, .queue = held, .clock = share.clock});
  bool completed = false;
  ExtensionUtilities::GetItemForExtension(std::make_shared<test::ScriptedContext>(), "Share",
                                          [&](const auto&, const auto&) { completed = true; });
  EXPECT_FALSE(completed);
  held->run();
  EXPECT_TRUE(completed);
}

TEST(Gathering, ALinkBecomesAnAnchorAndItsTitleTheSubject) {
  test::ShareTest share;
  const auto message = gather(
      share, {item({provider("public.url", link("https://example.org/?a=1&b=2"))}, "Title")});
  EXPECT_EQ(message->subject(), "Title");
  EXPECT_EQ(message->htmlBody(),
            "<a href=\"https://example.org/?a=1&b=2\">https://example.org/?a=1&b=2</a>");
  EXPECT_EQ(share.clock->sleeps().size(), 1U);
}

TEST(Gathering, ALinkWithoutATitleLeavesNoSubject) {
  test::ShareTest share;
  const auto message = gather(share, {item({provider("public.url", link("http://a"))}, "First"),
                                      item({provider("public.url", link("http://b"))})});
  EXPECT_TRUE(message->subject().is_null()) << "the last link's item has no title";
}

TEST(Gathering, AFilesTitleIsNoSubject) {
  test::ShareTest share;
  const std::string path = share.folder.write("a.pdf", "content");
  const auto message = gather(share, {item({provider("public.file-url", file(path))}, "Title")});
  EXPECT_TRUE(message->subject().is_null());
}

TEST(Gathering, TextComesBeforeTheLinksOfItsItem) {
  test::ShareTest share;
  const auto message =
      gather(share, {item({provider("public.url", link("http://a"))}, "T", "styled")});
  EXPECT_EQ(message->htmlBody(), "<doc>styled</doc><br/><a href=\"http://a\">http://a</a>");
}

TEST(Gathering, TextsAndAttachmentsComeItemByItem) {
  test::ShareTest share;
  const std::string one = share.folder.write("1.txt", "1");
  const std::string two = share.folder.write("2.txt", "2");
  const auto message = gather(
      share,
      {item({provider("public.url", link("http://1")), provider("public.file-url", file(one)),
             provider("public.url", link("http://1b"))},
            "First", "one"),
       item({}, std::nullopt, "between"),
       item({provider("public.file-url", file(two)), provider("public.url", link("http://2"))},
            "Second", "two")});
  EXPECT_EQ(
      message->htmlBody(),
      "<doc>one</doc><br/><a href=\"http://1\">http://1</a><a href=\"http://1b\">http://1b</a>"
      "<doc>between</doc><br/><doc>two</doc><br/><a href=\"http://2\">http://2</a>");
  EXPECT_EQ(message->subject(), "Second");
  EXPECT_EQ(attachments(*message),
            (std::vector{share.staging() + "/1.txt", share.staging() + "/2.txt"}));
}

TEST(Gathering, FilesAndImagesAreStagedUnderTheServiceThatIsNamed) {
  test::ShareTest share;
  const std::string path = share.folder.write("a.txt", "x");
  const auto message = gather(share,
                              {item({provider("public.file-url", file(path)),
                                     provider("public.png", test::bytes_of("pixels"))})},
                              "Other");
  const std::string other = share.folder.path("K7Q2M9XT4B.quoll/SharedData/Other");
  EXPECT_EQ(attachments(*message), (std::vector{other + "/a.txt", other + "/image.png"}));
  EXPECT_FALSE(std::filesystem::exists(share.staging()));
}

TEST(Gathering, AFileUrlThatIsNotUtf8NamesItsFile) {
  test::ShareTest share;
  const std::string text = share.folder.write("caf\xE9.txt", "content");
  const std::string picture = share.folder.write("\xFF", "pixels");
  const auto message = gather(
      share,
      {item({provider("public.file-url", file(text)), provider("public.png", file(picture))})});
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(attachments(*message),
            (std::vector{share.staging() + "/caf%E9.txt", share.staging() + "/image.png"}));
  EXPECT_EQ(test::read_file(share.staging() + "/caf%E9.txt"), "content");
  EXPECT_EQ(test::read_file(share.staging() + "/image.png"), "PNG of pixels");
  EXPECT_TRUE(lines(share).empty());
}

TEST(Gathering, EmptyTextAddsNothing) {
  test::ShareTest share;
  EXPECT_EQ(gather(share, {item({}, std::nullopt, "")})->htmlBody(), "");
}

TEST(Gathering, AFailedConversionIsStillAppended) {
  test::ShareTest share;
  EXPECT_EQ(gather(share, {item({}, std::nullopt, "refused")})->htmlBody(), "(null)<br/>");
}

TEST(Gathering, AFileIsStagedUnderItsOwnName) {
  test::ShareTest share;
  const std::string path = share.folder.write("report.pdf", "content");
  const auto message = gather(share, {item({provider("public.file-url", file(path))})});
  EXPECT_EQ(attachments(*message), std::vector{share.staging() + "/report.pdf"});
  EXPECT_EQ(test::read_file(share.staging() + "/report.pdf"), "content");
  EXPECT_EQ(message->htmlBody(), "");
}

TEST(Gathering, AnImageSharedAsAFileStaysAFile) {
  test::ShareTest share;
  const std::string path = share.folder.write("photo.jpg", "jpeg");
  class Both final : public platform::NSItemProvider {
   public:
    explicit Both(Value item) : item_(std::move(item)) {}
    bool hasItemConformingToTypeIdentifier(std::string_view /*type*/) const override {
      return true;
    }
    void loadItemForTypeIdentifier(std::string_view type, CompletionHandler handler) override {
      EXPECT_EQ(type, "public.url") << "the URL is asked for first";
      handler(item_, {});
    }

   private:
    Value item_;
  };
  const auto message = gather(share, {item({std::make_shared<Both>(file(path))})});
  EXPECT_EQ(attachments(*message), std::vector{share.staging() + "/photo.jpg"});
  EXPECT_EQ(test::read_file(share.staging() + "/photo.jpg"), "jpeg");
}

TEST(Gathering, ImagesAreStagedAsPngInTheOrderOfTheirHandlers) {
  test::ShareTest share;
  const auto image = std::make_shared<platform::NSImage>(test::bytes_of("second"), 1, 1);
  const auto message = gather(share, {item({provider("public.jpeg", test::bytes_of("first")),
                                            provider("public.image", Value(image))})});
  EXPECT_EQ(attachments(*message),
            (std::vector{share.staging() + "/image.png", share.staging() + "/image_1.png"}));
  EXPECT_EQ(test::read_file(share.staging() + "/image.png"), "PNG of first");
  EXPECT_EQ(test::read_file(share.staging() + "/image_1.png"), "PNG of TIFF of second")
      << "an image object goes through its TIFF form";
}

TEST(Gathering, AnImageItemThatIsAFileIsRead) {
  test::ShareTest share;
  const std::string path = share.folder.write("photo", "pixels");
  const auto message = gather(share, {item({provider("public.png", file(path))})});
  EXPECT_EQ(test::read_file(attachments(*message).at(0)), "PNG of pixels");
}

TEST(Gathering, WhatIsNoImageIsLeftOutAndNeverProlongsTheWait) {
  struct Case {
    const char* reason;
    Value item;
    std::size_t lines;
  };
  const Case cases[] = {
      {"bytes that no reader takes (the reader logs)", test::bytes_of("broken"), 0},
      {"an image object that cannot be written",
       std::make_shared<platform::NSImage>(test::bytes_of("broken"), 1, 1), 0},
      {"a text", "text", 1},
      {"nothing", nullptr, 1},
      {"a web link", link("http://a"), 1},
      {"a file that is not there", file("/nowhere/at all"), 1},
  };
  for (const Case& row : cases) {
    test::ShareTest share;
    const auto message = gather(share, {item({provider("public.image", row.item)})});
    EXPECT_TRUE(message->attachments().empty()) << row.reason;
    EXPECT_EQ(share.clock->sleeps().size(), 1U) << row.reason;
    const auto logged = lines(share);
    ASSERT_EQ(logged.size(), row.lines) << row.reason;
    for (const std::string& line : logged) {
      EXPECT_TRUE(line.starts_with("GetItemForExtension kUTTypeImage ")) << line;
    }
    for (const platform::LogEvent& event : share.log->events()) {
      EXPECT_TRUE(event.error) << event.text;
    }
  }
}

TEST(Gathering, LoadErrorsAreLoggedAndNeverProlongTheWait) {
  test::ShareTest share;
  const Error error{"Host", 7, "gone", {}};
  const auto failing = [&](const char* type) {
    return std::make_shared<test::ScriptedProvider>(
        type, [&](const auto& handler) { handler(link("http://a"), error); });
  };
  const auto message = gather(share, {item({failing("public.url"), failing("public.png")}, "T")});
  EXPECT_EQ(lines(share),
            (std::vector<std::string>{
                "GetItemForExtension kUTTypeURL Error Domain=Host Code=7 \"gone\"",
                "GetItemForExtension kUTTypeImage Error Domain=Host Code=7 \"gone\""}));
  EXPECT_TRUE(message->subject().is_null());
  EXPECT_EQ(message->htmlBody(), "");
  EXPECT_EQ(share.clock->sleeps().size(), 1U);
}

TEST(Gathering, NeitherItemNorErrorIsALinkToNothing) {
  test::ShareTest share;
  const auto message = gather(share, {item({provider("public.url", nullptr)}, "T")});
  EXPECT_EQ(message->htmlBody(), "<a href=\"(null)\">(null)</a>");
  EXPECT_EQ(message->subject(), "T");
}

TEST(Gathering, AUrlItemOfTheWrongKindRaisesAtTheProviderAndIsCounted) {
  test::ShareTest share;
  bool raised = false;
  const auto wrong =
      std::make_shared<test::ScriptedProvider>("public.url", [&](const auto& handler) {
        try {
          handler("not a URL", {});
        } catch (const foundation::NSException& exception) {
          raised = exception.name() == "NSInvalidArgumentException";
        }
      });
  gather(share, {item({wrong})});
  EXPECT_TRUE(raised);
  EXPECT_EQ(share.clock->sleeps().size(), 1U);
}

TEST(Gathering, AFileThatCannotBeStagedIsLeftOut) {
  test::ShareTest share;
  const std::string path = share.folder.write("b.txt", "b");
  const auto message = gather(share, {item({provider("public.file-url", file("/nowhere/a.txt")),
                                            provider("public.file-url", file(path))})});
  EXPECT_EQ(attachments(*message), std::vector{share.staging() + "/b.txt"});
  ASSERT_EQ(lines(share).size(), 1U);
  EXPECT_TRUE(lines(share)[0].starts_with("Error writing file shareFiles Error Domain="));
}

TEST(Gathering, WaitsItsFullTimeForWhatIsNeitherUrlNorImage) {
  test::ShareTest share;
  const auto message = gather(
      share, {item({provider("public.plain-text", "x"), provider("public.url", link("a:/"))})});
  EXPECT_EQ(share.clock->sleeps(), std::vector<double>(101, kInterval));
  EXPECT_EQ(message->htmlBody(), "<a href=\"a:/\">a:/</a>");
}

TEST(Gathering, StopsAfterTheFirstSleepAtWhoseEndAllHaveAnswered) {
  platform::NSItemProvider::CompletionHandler handler;
  for (const int answered_in : {1, 2, 50, 100}) {
    test::ShareTest share([&](int sleep) {
      if (sleep == answered_in) {
        handler(link("http://a"), {});
      }
    });
    const auto late = std::make_shared<test::ScriptedProvider>(
        "public.url", [&](const auto& asked) { handler = asked; });
    const auto message = gather(share, {item({late})});
    EXPECT_EQ(share.clock->sleeps().size(), static_cast<std::size_t>(answered_in));
    EXPECT_EQ(message->htmlBody(), "<a href=\"http://a\">http://a</a>");
    handler = nullptr;
  }
}

TEST(Gathering, WhatAnswersAfterTheCompletionStillChangesTheMessage) {
  platform::NSItemProvider::CompletionHandler handler;
  test::ShareTest share;
  const auto never = std::make_shared<test::ScriptedProvider>(
      "public.url", [&](const auto& asked) { handler = asked; });
  const auto message = gather(share, {item({never})});
  EXPECT_EQ(share.clock->sleeps().size(), 101U);
  EXPECT_EQ(message->htmlBody(), "");
  handler(link("http://late"), {});
  EXPECT_EQ(message->htmlBody(), "<a href=\"http://late\">http://late</a>");
}

TEST(Gathering, AnsweringTwiceTakesTheCounterBelowZeroAndGoesOnWaiting) {
  test::ShareTest share;
  const auto twice =
      std::make_shared<test::ScriptedProvider>("public.url", [](const auto& handler) {
        handler(link("http://a"), {});
        handler(link("http://a"), {});
      });
  gather(share, {item({twice})});
  EXPECT_EQ(share.clock->sleeps().size(), 101U) << "only zero ends the wait, not less";
}

TEST(Gathering, ABodyThatWasClearedStartsEmptyAgain) {
  test::ShareTest share;
  platform::NSItemProvider::CompletionHandler handler;
  const auto never = std::make_shared<test::ScriptedProvider>(
      "public.url", [&](const auto& asked) { handler = asked; });
  const auto message = gather(share, {item({never})});
  message->htmlBody = nullptr;
  handler(link("http://a"), {});
  EXPECT_EQ(message->htmlBody(), "<a href=\"http://a\">http://a</a>");
}

TEST(Gathering, HandlersOnManyThreadsLoseNothing) {
  test::ShareTest share([](int) { std::this_thread::yield(); });
  std::vector<std::thread> threads;
  std::mutex mutex;
  std::atomic<int> answered = 0;
  constexpr int kCount = 40;
  std::vector<std::shared_ptr<platform::NSItemProvider>> providers;
  for (int i = 0; i < kCount; ++i) {
    const Value given = i % 2 == 0 ? link("http://h/" + std::to_string(i))
                                   : file(share.folder.write("same.txt", std::to_string(i)));
    providers.push_back(std::make_shared<test::ScriptedProvider>(
        i % 2 == 0 ? "public.url" : "public.file-url", [&, given](const auto& handler) {
          const std::lock_guard lock(mutex);
          threads.emplace_back([&, given, handler] {
            handler(given, {});
            ++answered;
          });
        }));
  }
  const auto message = gather(share, {item(providers, "T", "text")});
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(answered, kCount);
  EXPECT_EQ(message->attachments().count(), static_cast<std::size_t>(kCount) / 2);
  const std::string body = message->htmlBody().description();
  for (int i = 0; i < kCount; i += 2) {
    EXPECT_NE(body.find(">http://h/" + std::to_string(i) + "<"), std::string::npos) << i;
  }
}

}  // namespace
}  // namespace quoll
