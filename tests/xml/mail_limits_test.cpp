// How much of a document becomes a mail, and in what time.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quoll/linux/xml/mail_form.h"

namespace quoll {
namespace {

constexpr std::string_view kRestLeftOut = "[The rest was left out: the text is too long.]";

std::string repeated(std::string_view piece, std::size_t times) {
  std::string result;
  result.reserve(piece.size() * times);
  for (; times > 0; --times) {
    result += piece;
  }
  return result;
}

std::size_t count(std::string_view text, std::string_view piece) {
  std::size_t found = 0;
  for (auto at = text.find(piece); at != std::string_view::npos; at = text.find(piece, at + 1)) {
    ++found;
  }
  return found;
}

bool is_cut(const xml::MailBodies& bodies) {
  const bool text = bodies.text.ends_with(std::string(kRestLeftOut) + "\n");
  const bool html =
      bodies.html.find(std::string(kRestLeftOut) + "</div>\n</body>") != std::string::npos;
  EXPECT_EQ(text, html);
  return text && html;
}

TEST(MailLimits, ABodyHas128MiB) {
  // A line break inside sixteen quotes is a line of 33 bytes.
  const auto read = [](std::size_t lines) {
    return xml::mail_bodies(repeated("<blockquote>", 16) + repeated("<br>", lines) + "x");
  };
  const std::size_t most = (std::size_t{128} << 20U) / 32;
  EXPECT_FALSE(is_cut(read(most - 10)));
  const auto cut = read(most + 100'000);
  EXPECT_TRUE(is_cut(cut));
  EXPECT_LT(cut.text.size(), (std::size_t{128} << 20U) + 1000);
}

TEST(MailLimits, ElementsAre262144Deep) {
  const auto whole = xml::mail_bodies("y" + repeated("<b>", 262'140) + "x");
  EXPECT_FALSE(is_cut(whole));
  EXPECT_EQ(whole.text, "yx\n");
  const auto cut = xml::mail_bodies("y" + repeated("<b>", 262'150) + "x");
  EXPECT_TRUE(is_cut(cut));
  EXPECT_TRUE(cut.text.starts_with("y\n")) << "what was read is kept";
}

TEST(MailLimits, BlocksAre128Deep) {
  EXPECT_EQ(count(xml::mail_bodies(repeated("<div>", 128) + "x").html, "<div>"), 128U);
  const auto deeper = xml::mail_bodies(repeated("<div>", 130) + "x</div>y</div>z");
  EXPECT_EQ(count(deeper.html, "<div>"), 128U);
  EXPECT_NE(deeper.html.find("x<br>y<br>z"), std::string::npos) << "the lines are kept";
}

TEST(MailLimits, EndsThatFitNothingCutTheText) {
  const auto bodies =
      xml::mail_bodies("y" + repeated("<b>", 11'000) + repeated("</i>", 20'000) + "x");
  EXPECT_TRUE(is_cut(bodies));
  EXPECT_TRUE(bodies.text.starts_with("y\n"));
}

/// Each would take minutes if the time grew with the square of the length.
TEST(MailLimits, TheTimeGrowsWithTheLengthOnly) {
  std::string attributes = "<b ";
  for (int number = 0; number < 200'000; ++number) {
    attributes += "a" + std::to_string(number) + "=1 ";
  }
  struct Row {
    const char* reason;
    std::string html;
    std::string text;
  };
  const std::vector<Row> rows{
      {"nested blocks", repeated("<div>", 100'000) + "x" + repeated("</div>", 100'000), "x\n"},
      {"nested looks", repeated("<b>", 100'000) + "x", "x\n"},
      {"nested links", repeated("<b><a href=http://x>", 50'000) + "x", "x <http://x>\n"},
      {"nested lists", repeated("<ul><li>", 50'000) + "x", repeated(" ", 32) + "- x\n"},
      {"nested tables", repeated("<table><tr><td>", 30'000) + "x", "x\n"},
      {"nested quotes", repeated("<blockquote>", 100'000) + "x", repeated("> ", 16) + "x\n"},
      {"attributes", attributes + ">x", "x\n"},
      {"a long value", "<b title='" + repeated("a", 10'000'000) + "'>x", "x\n"},
      {"a long style", "<b style='" + repeated("color:red;", 1'000'000) + "'>x", "x\n"},
      {"a long link", "<a href='http:" + repeated("a", 10'000'000) + "'>x", "x\n"},
      {"a long text of a link", "<a href='http://x'>" + repeated("a<b>b</b>", 200'000) + "</a>",
       repeated("ab", 200'000) + " <http://x>\n"},
      {"empty cells", "<table><tr>" + repeated("<td>", 500'000) + "x",
       repeated("\t", 499'999) + "x\n"},
      {"blanks", "a" + repeated(" ", 5'000'000) + "x", "a x\n"},
      {"looks that change", repeated("a<i>b</i>", 200'000), repeated("ab", 200'000) + "\n"},
      {"an open tag", "x" + repeated("<a ", 300'000), "x\n"},
      {"an open value", "x<a href=\"" + repeated("<a ", 300'000), "x\n"},
      {"an open comment", "x<!--" + repeated("-", 3'000'000), "x\n"},
      {"references", repeated("&", 1'000'000), repeated("&", 1'000'000) + "\n"},
      {"style sheets", repeated("<style>p{}</style>", 200'000) + "x", "x\n"},
  };
  for (const Row& row : rows) {
    EXPECT_TRUE(xml::mail_bodies(row.html).text == row.text) << row.reason;
  }
}

}  // namespace
}  // namespace quoll
