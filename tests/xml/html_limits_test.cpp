// How much of a document is read: at each limit, and one beyond.
#include <gtest/gtest.h>

#include <string>

#include "quoll/linux/xml/styled_text.h"

namespace quoll {
namespace {

using platform::TextAttributes;

std::shared_ptr<platform::NSAttributedString> read(const std::string& html) {
  static const auto kReader = xml::make_styled_text(true);
  return kReader->from_html(html);
}

/// How the only text of a document looks.
TextAttributes look_of(const std::string& html) {
  const auto text = read(html);
  return text && text->runs().size() == 1 ? text->runs()[0].attributes : TextAttributes{};
}

std::string repeated(std::string_view piece, std::size_t times) {
  std::string result;
  for (; times > 0; --times) {
    result += piece;
  }
  return result;
}

TEST(HtmlLimits, ALinkHas8192Bytes) {
  const auto link_of = [](std::size_t size) {
    return look_of("<a href='tel:" + std::string(size - 4, '1') + "'>x</a>").link.size();
  };
  EXPECT_EQ(link_of(8192), 8192U);
  EXPECT_EQ(link_of(8193), 0U) << "the text goes without it";
}

TEST(HtmlLimits, AFontsNameHas100Bytes) {
  const auto name_of = [](std::size_t size) {
    return look_of("<p style='font-family:" + std::string(size, 'f') + "'>x").font.size();
  };
  EXPECT_EQ(name_of(100), 100U);
  EXPECT_EQ(name_of(101), 0U);
}

TEST(HtmlLimits, AFontHas1638Points) {
  EXPECT_EQ(look_of("<p style='font-size:1638pt'>x").size, 1638);
  EXPECT_EQ(look_of("<p style='font-size:1639pt'>x").size, 0);
  platform::TextRun run{"x", {.size = 1638}};
  const auto written = [&run] {
    const auto html =
        read("x")
            ? xml::make_styled_text(false)->to_html(platform::NSAttributedString(std::vector{run}))
            : std::nullopt;
    return std::string(html->begin(), html->end());
  };
  EXPECT_NE(written().find("font-size: 1638pt"), std::string::npos);
  run.attributes.size = 1639;
  EXPECT_EQ(written().find("font-size"), std::string::npos);
}

TEST(HtmlLimits, EndsThatFitNothingAreComparedTwoHundredMillionTimes) {
  // With every element that is open, those of every document among them.
  const auto is_read = [](std::size_t open, std::size_t ends) {
    return read(repeated("<b>", open) + repeated("</i>", ends) + "x") != nullptr;
  };
  EXPECT_TRUE(is_read(9'000, 20'000));
  EXPECT_FALSE(is_read(11'000, 20'000));
}

}  // namespace
}  // namespace quoll
