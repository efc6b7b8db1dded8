#include <gtest/gtest.h>

#include "apps/compose/plain_text.h"

namespace quoll::compose {
namespace {

TEST(PlainTextOfHtml, IsWhatAReaderSees) {
  struct Row {
    const char* reason;
    const char* html;
    const char* text;
  };
  const Row rows[] = {
      {"nothing", "", ""},
      {"only white space", " \n\t ", ""},
      {"no markup at all", "a b", "a b\n"},
      {"white space is one blank", "a \n\t b", "a b\n"},
      {"inline elements join", "a<b>b</b> <i>c</i>", "ab c\n"},
      {"a paragraph stands apart", "<p>a</p><p>b</p>", "a\n\nb\n"},
      {"a block begins a line", "<div>a</div><div>b</div>c", "a\nb\nc\n"},
      {"breaks are kept", "a<br>b<br/><br />c", "a\nb\n\nc\n"},
      {"items after a dash", "<ul><li>a</li><li>b</ul>", "- a\n- b\n"},
      {"preformatted lines", "<pre>a\n  b</pre>c", "a\n  b\nc\n"},
      {"a link's address", "<a href=\"https://x/?a&amp;b\">X</a>.", "X <https://x/?a&b>.\n"},
      {"a link that is its text", "<a href='https://x/'>https://x/</a>", "https://x/\n"},
      {"a link without quotes", "<A class=y HREF=https://x/>X</A>", "X <https://x/>\n"},
      {"a link that is no link", "<a name=x>X</a>", "X\n"},
      {"entities", "&lt;&amp;&gt;&quot;&#65;&#x42;&euro;", "<&>\"AB\u20ac\n"},
      {"what is no entity", "a & b &x; &; &#; &#x110000000; &amp",
       "a & b &x; &; &#; &#x110000000; &amp\n"},
      {"entities of no character", "&#0;&#xD800;&#xFFFFFFFF;", "\uFFFD\uFFFD\uFFFD\n"},
      {"scripts and styles are unseen", "<style>x{}</style>a<script>if (1<2) b</script>c", "ac\n"},
      {"a title is unseen", "<title>t</title>a", "a\n"},
      {"comments are unseen", "a<!-- <b> -->b", "ab\n"},
      {"an open comment", "a<!-- b", "a\n"},
      {"a tag that never ends", "a<b", "a\n"},
      {"a sign that opens no tag", "1 < 2", "1 < 2\n"},
      {"a sign inside a value", "<a href=\"x>y\">z</a>", "z <x>y>\n"},
      {"two documents, an empty line and an anchor",
       "<!DOCTYPE html><html><head><title>t</title></head><body><p>a</p></body></html><br/>"
       "<a href=\"https://x/\">https://x/</a>",
       "a\n\n\nhttps://x/\n"},
      {"other scripts", "<p>\u65e5\u672c</p>", "\u65e5\u672c\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(plain_text_of_html(row.html), row.text) << row.reason;
  }
}

TEST(PlainTextOfHtml, HostileTextsEnd) {
  for (const char* piece :
       {"<", "<a ", "<a href=\"", "<!--", "&", "&amp", "<div>", "</", "<a href=x>"}) {
    std::string html;
    while (html.size() < (1U << 20U)) {
      html += piece;
    }
    EXPECT_LE(plain_text_of_html(html).size(), 8 * html.size()) << piece;
  }
}

}  // namespace
}  // namespace quoll::compose
