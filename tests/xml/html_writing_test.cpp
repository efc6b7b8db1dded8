#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "quoll/foundation/text.h"
#include "quoll/linux/xml/styled_text.h"

namespace quoll {
namespace {

using platform::NSAttributedString;
using platform::TextAttributes;
using platform::TextRun;

std::string written(const NSAttributedString& text) {
  const auto document = xml::make_styled_text(false)->to_html(text);
  return document ? std::string(document->begin(), document->end()) : "(none)";
}

std::string body(const std::vector<TextRun>& runs) {
  const std::string document = written(NSAttributedString(runs));
  const auto start = document.find("<body>\n") + 7;
  return document.substr(start, document.find("</body>") - start);
}

TEST(HtmlWriting, WritesAWholeDocument) {
  EXPECT_EQ(written(NSAttributedString("Hello")),
            "<!DOCTYPE html>\n"
            "<html>\n"
            "<head>\n"
            "<meta charset=\"utf-8\">\n"
            "<meta name=\"generator\" content=\"Quoll Share\">\n"
            "<style>p { margin: 0 }</style>\n"
            "</head>\n"
            "<body>\n"
            "<p>Hello</p>\n"
            "</body>\n"
            "</html>\n");
}

TEST(HtmlWriting, WritesPlainText) {
  struct Row {
    const char* reason;
    std::string text;
    std::string body;
  };
  const Row rows[] = {
      {"no text, no paragraph", "", ""},
      {"a final line feed ends the paragraph and begins none", "a\n", "<p>a</p>\n"},
      {"an empty paragraph keeps its height", "a\n\nb", "<p>a</p>\n<p><br></p>\n<p>b</p>\n"},
      {"empty paragraphs only", "\n\n", "<p><br></p>\n<p><br></p>\n"},
      {"CRLF is one end", "a\r\nb\r\n", "<p>a</p>\n<p>b</p>\n"},
      {"CR is an end", "a\rb", "<p>a</p>\n<p>b</p>\n"},
      {"LF before CR is two ends", "a\n\rb", "<p>a</p>\n<p><br></p>\n<p>b</p>\n"},
      {"what HTML reads as markup", "<b> & \"x\"", "<p>&lt;b&gt; &amp; &quot;x&quot;</p>\n"},
      {"a reference is not a reference", "&amp;", "<p>&amp;amp;</p>\n"},
      {"the last blank of a run allows a line to break", "a   b",
       "<p>a<span class=\"quoll-blanks\">\u00A0\u00A0</span> b</p>\n"},
      {"blanks at the front", " a", "<p><span class=\"quoll-blanks\">\u00A0</span>a</p>\n"},
      {"blanks at the end", "a \nb",
       "<p>a<span class=\"quoll-blanks\">\u00A0</span></p>\n<p>b</p>\n"},
      {"a tab", "a\tb", "<p>a<span style=\"white-space: pre\">\t</span>b</p>\n"},
      {"a no-break blank of the text's own", "a\u00A0b", "<p>a\u00A0b</p>\n"},
      {"forbidden control characters", std::string("a\0b\x01\x1B\x7F\u0085\u009Fc", 11),
       "<p>abc</p>\n"},
      {"form feeds and vertical tabs part words", "a\fb\vc", "<p>a b c</p>\n"},
      {"other scripts and emoji", "\u65E5\u672C \U0001F600", "<p>\u65E5\u672C \U0001F600</p>\n"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(body({{row.text, {}}}), row.body) << row.reason;
  }
}

TEST(HtmlWriting, WritesAttributes) {
  struct Row {
    const char* reason;
    TextAttributes look;
    std::string paragraph;
  };
  const Row rows[] = {
      {"bold", {.bold = true}, "<b>x</b>"},
      {"italic", {.italic = true}, "<i>x</i>"},
      {"underline", {.underline = true}, "<u>x</u>"},
      {"strikethrough", {.strikethrough = true}, "<s>x</s>"},
      {"colour, with leading zeros",
       {.colour = 0x00000A},
       "<span style=\"color: #00000a\">x</span>"},
      {"background",
       {.background = 0xFFFF00},
       "<span style=\"background-color: #ffff00\">x</span>"},
      {"font and size",
       {.font = "Noto Serif", .size = 10.5},
       "<span style=\"font-family: 'Noto Serif'; font-size: 10.5pt\">x</span>"},
      {"a kind of font is no name",
       {.font = "monospace"},
       "<span style=\"font-family: monospace\">x</span>"},
      {"link",
       {.link = "https://example.org/?a=1&b=2"},
       "<a href=\"https://example.org/?a=1&amp;b=2\">x</a>"},
      {"everything, nested in one order",
       {true, true, true, true, 0x112233, 0x445566, "F", 9, "mailto:a@b.example"},
       "<a href=\"mailto:a@b.example\"><span style=\"font-family: 'F'; font-size: 9pt; "
       "color: #112233; background-color: #445566\"><b><i><u><s>x</s></u></i></b></span></a>"},
      {"a link cannot leave its quotes",
       {.link = "x\" onclick=\"y'<>"},
       "<a href=\"x&quot; onclick=&quot;y'&lt;&gt;\">x</a>"},
      {"a font cannot leave its quotes, its style or its attribute",
       {.font = "a'; b: \"c\\\n</style>"},
       "<span style=\"font-family: 'a\\'; b: &quot;c\\\\&lt;/style&gt;'\">x</span>"},
      {"a size that is none", {.size = -3}, "x"},
      {"a size without end", {.size = std::numeric_limits<double>::infinity()}, "x"},
      {"a size that is no number", {.size = std::numeric_limits<double>::quiet_NaN()}, "x"},
      {"a link that is not UTF-8", {.link = "http://h/\xFF"}, "x"},
      {"a font that is not UTF-8", {.font = "\xFF"}, "x"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(body({{"x", row.look}}), "<p>" + row.paragraph + "</p>\n") << row.reason;
  }
}

TEST(HtmlWriting, NestsRunsInParagraphs) {
  const TextAttributes bold{.bold = true};
  struct Row {
    const char* reason;
    std::vector<TextRun> runs;
    std::string body;
  };
  const Row rows[] = {
      {"runs of one paragraph", {{"a", {}}, {"b", bold}, {"c", {}}}, "<p>a<b>b</b>c</p>\n"},
      {"a run over two paragraphs", {{"a\nb", bold}}, "<p><b>a</b></p>\n<p><b>b</b></p>\n"},
      {"blanks parted by runs",
       {{"a ", {}}, {" b", bold}},
       "<p>a<span class=\"quoll-blanks\">\u00A0</span><b> b</b></p>\n"},
      {"CRLF parted by runs", {{"a\r", {}}, {"\nb", bold}}, "<p>a</p>\n<p><b>b</b></p>\n"},
      {"an empty run", {{"a", {}}, {"", bold}, {"c", {}}}, "<p>ac</p>\n"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(body(row.runs), row.body) << row.reason;
  }
}

TEST(HtmlWriting, RefusesTextThatIsNotUtf8) {
  EXPECT_EQ(written(NSAttributedString("\xFF")), "(none)");
  EXPECT_EQ(written(NSAttributedString({{"\xC3", {}}, {"\xA9", {.bold = true}}})), "(none)")
      << "a character parted by two runs";
}

TEST(HtmlWriting, WritesLargeTexts) {
  std::string text;
  while (text.size() < 20'000'000) {
    text += "A line of words, and  some more of them.\n";
  }
  const std::size_t lines = text.size() / 41;
  const std::string document = written(NSAttributedString(text));
  std::size_t paragraphs = 0;
  for (auto at = document.find("<p>"); at != std::string::npos; at = document.find("<p>", at + 3)) {
    ++paragraphs;
  }
  EXPECT_EQ(paragraphs, lines);
  EXPECT_TRUE(document.ends_with("</p>\n</body>\n</html>\n"));
}

}  // namespace
}  // namespace quoll
