#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "quoll/foundation/exception.h"
#include "quoll/message/extension_message.h"
#include "tests/support/recorders.h"

/// What the operation console does not reach: other finders of links, large texts, threads.
namespace quoll {
namespace {

using foundation::List;
using foundation::NSException;
using foundation::Value;

class FixedLinks final : public platform::Links {
 public:
  explicit FixedLinks(std::vector<std::string> links) : links_(std::move(links)) {}
  std::vector<std::string> find(std::string_view text) override {
    asked.emplace_back(text);
    return links_;
  }
  std::vector<std::string> asked;

 private:
  std::vector<std::string> links_;
};

class HtmlRendering : public testing::Test {
 protected:
  /// The rendering of a plain body in which those links are found.
  std::string rendered(const std::string& text, std::vector<std::string> links) {
    finder_ = std::make_shared<FixedLinks>(std::move(links));
    const platform::ScopedDesktop desktop({.log = log_, .links = finder_});
    message_->plainBody = text;
    std::string html = message_->renderHtml();
    EXPECT_EQ(Value(html), message_->plainBody()) << "the result becomes the body";
    EXPECT_EQ(Value(""), message_->htmlBody()) << "the other body stays";
    return html;
  }

  std::shared_ptr<ExtensionMessage> message_ = ExtensionMessage::make();
  std::shared_ptr<test::RecordingLog> log_ = std::make_shared<test::RecordingLog>();
  std::shared_ptr<FixedLinks> finder_;
};

/// The rendering by its rule, step for step.
std::string by_rule(std::string text, const std::vector<std::string>& links) {
  for (const std::string& link : links) {
    std::string anchor = "<a href='";
    anchor += link + "'>" + link + "</a>";
    for (std::size_t at = text.find(link); at != std::string::npos;
         at = text.find(link, at + anchor.size())) {
      text.replace(at, link.size(), anchor);
    }
  }
  return text;
}

TEST_F(HtmlRendering, SearchesTheLinksBehindTheLineBreaks) {
  EXPECT_EQ(rendered("a\n\nb\r\n", {}), "a<br><br>b\r<br>");
  EXPECT_EQ(finder_->asked, std::vector<std::string>{"a<br><br>b\r<br>"});
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(HtmlRendering, ReplacesByTheRuleWhateverIsFound) {
  const std::string text = "x:y x:yz x:y x:yx:y\nab x:";
  const struct {
    std::vector<std::string> links;
    const char* reason;
  } rows[] = {
      {{"x:y"}, "every occurrence, also inside longer words"},
      {{"x:y", "x:y", "x:y"}, "repeats nest"},
      {{"x:yz", "x:y"}, "a part of a longer link is replaced inside it"},
      {{"x:y", "x:yz"}, "the longer one is gone after the shorter"},
      {{"x:yx:y", "x:y"}, "a link that holds another twice"},
      {{"q:r"}, "what does not stand in the text"},
      {{"q:r", "x:y"}, "one that does not, one that does"},
      {{"a"}, "a text that stands in the anchors too"},
      {{"<br>", "x:"}, "a line break"},
      {{text}, "no occurrence, since the line feed is gone"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(rendered(text, row.links), by_rule("x:y x:yz x:y x:yx:y<br>ab x:", row.links))
        << row.reason;
  }
  EXPECT_EQ(rendered("aaaaa", {"aa"}), "<a href='aa'>aa</a><a href='aa'>aa</a>a")
      << "occurrences do not overlap";
  EXPECT_EQ(rendered("a", {"", "a"}), "<a href='a'>a</a>") << "an empty link is nowhere";
}

TEST_F(HtmlRendering, NestsRepeatsExactly) {
  std::string text;
  for (int repeats = 0; repeats <= 12; ++repeats) {
    const std::vector<std::string> links(static_cast<std::size_t>(repeats), "http://h.org/");
    EXPECT_EQ(rendered(text, links), by_rule(text, links)) << repeats;
    text += "http://h.org/ ";
  }
}

TEST_F(HtmlRendering, KeepsTheExactResultUpTo64MiB) {
  // One occurrence, replaced n times, is 2^n links and 2^n - 1 anchors of 15 bytes around them.
  const auto size = [](unsigned times, std::size_t link) {
    return (link << times) + 15 * ((std::size_t{1} << times) - 1);
  };
  const std::size_t limit = std::size_t{64} << 20U;
  const std::string link = "h:" + std::string(15, 'x');  // 17 bytes: 32 to a link less 15 in all
  ASSERT_EQ(size(21, link.size()), limit - 15);
  const std::vector<std::string> links(21, link);
  const std::string exact = rendered(link + std::string(15, ' '), links);
  EXPECT_EQ(exact.size(), limit);
  EXPECT_TRUE(exact.starts_with("<a href='<a href='"));
  EXPECT_TRUE(exact.ends_with("</a></a>" + std::string(15, ' ')));
  EXPECT_TRUE(log_->lines().empty());
  EXPECT_EQ(rendered(link + std::string(16, ' '), links).size(), size(20, link.size()) + 16)
      << "one byte more: the last replacement is left out";
  EXPECT_EQ(log_->lines(), std::vector<std::string>{"ExtensionMessage renderHtml stopped before " +
                                                    link + ": longer than 64 MiB"});
}

TEST_F(HtmlRendering, StopsAtTheLimitForGood) {
  std::vector<std::string> links(100, "http://h.org/");
  links.emplace_back("x:other");
  std::string text;
  for (int i = 0; i < 100; ++i) {
    text += "http://h.org/ ";
  }
  const std::string html = rendered(text + "x:other", links);
  EXPECT_LE(html.size(), std::size_t{64} << 20U);
  EXPECT_GT(html.size(), std::size_t{16} << 20U);
  EXPECT_TRUE(html.ends_with(" x:other")) << "no link is replaced behind the one that is left out";
  EXPECT_EQ(log_->lines().size(), 1U);
}

TEST_F(HtmlRendering, FindsNothingWithoutAFinder) {
  const platform::ScopedDesktop desktop({});
  message_->plainBody = "http://h.org/\n";
  EXPECT_EQ(message_->renderHtml(), "http://h.org/<br>");
  EXPECT_TRUE(message_->searchUrlsDetector("http://h.org/").empty());
}

TEST_F(HtmlRendering, AnswersWhatTheFinderFinds) {
  const auto finder = std::make_shared<FixedLinks>(std::vector<std::string>{"b:", "a:", "b:"});
  const platform::ScopedDesktop desktop({.links = finder});
  EXPECT_EQ(message_->searchUrlsDetector("some\ntext"),
            (std::vector<std::string>{"b:", "a:", "b:"}));
  EXPECT_EQ(finder->asked, std::vector<std::string>{"some\ntext"});
}

TEST_F(HtmlRendering, RaisesForBodiesOfAnotherKind) {
  const Value wrong[] = {1, true, foundation::Date{1}, List(), foundation::Bytes{1}};
  for (const Value& value : wrong) {
    message_ = ExtensionMessage::make();
    message_->htmlBody = value;
    EXPECT_THROW(message_->renderHtml(), NSException) << value.kind();
    message_->htmlBody = Value();
    message_->plainBody = value;
    EXPECT_THROW(message_->renderHtml(), NSException) << value.kind();
    EXPECT_EQ(message_->plainBody(), value) << "nothing was changed";
  }
}

TEST_F(HtmlRendering, ReadsTheAttachmentsUnderTheLock) {
  std::thread other([this] {
    for (int i = 0; i < 2000; ++i) {
      const auto lock = message_->synchronized();
      message_->attachments().addObject("a");
    }
  });
  for (int i = 0; i < 50; ++i) {
    message_->htmlBody = "";
    static_cast<void>(message_->renderHtml());
  }
  other.join();
  message_->htmlBody = "";
  EXPECT_EQ(message_->renderHtml().size(),
            2000 * std::string_view("<img src=\"file://a\"/><br/>").size());
}

}  // namespace
}  // namespace quoll
