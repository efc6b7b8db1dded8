// The plain text of a mail that is made of HTML.
#include <gtest/gtest.h>

#include <string>

#include "quoll/linux/xml/html_writer.h"
#include "quoll/linux/xml/mail_form.h"

namespace quoll {
namespace {

std::string text_of(const std::string& html) {
  return xml::mail_bodies(html).text;
}

struct Row {
  const char* reason;
  std::string html;
  std::string text;
};

void check(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    EXPECT_EQ(text_of(row.html), row.text) << row.reason << ": " << row.html;
  }
}

TEST(MailText, HasTheLinesThatAReaderSees) {
  check({
      {"nothing", "", ""},
      {"only white space", " \n\t ", ""},
      {"no markup at all", "a b", "a b\n"},
      {"white space is one blank", "a \n\t b", "a b\n"},
      {"inline elements join", "a<b>b</b> <i>c</i>", "ab c\n"},
      {"paragraphs have an empty line between them", "<p>a</p><p>b</p>", "a\n\nb\n"},
      {"paragraphs are not glued to what follows", "<p>a</p>b", "a\n\nb\n"},
      {"a heading is a paragraph", "<h1>a</h1>b", "a\n\nb\n"},
      {"a block begins a line", "<div>a</div><div>b</div>c", "a\nb\nc\n"},
      {"breaks are kept", "a<br>b<br/><br />c", "a\nb\n\nc\n"},
      {"preformatted lines", "<pre>a\n  b</pre>c", "a\n  b\n\nc\n"},
      {"a rule", "a<hr>b", "a\n---\nb\n"},
      {"a text that is no paragraph", "a<div>b</div>", "a\nb\n"},
      {"a no-break blank", "a&nbsp;b", "a\u00A0b\n"},
      {"other scripts", "<p>\u65e5\u672c</p>", "\u65e5\u672c\n"},
      {"a picture's other text", "a <img src='cid:1' alt='pic'>", "a pic\n"},
      {"paragraphs without a margin are lines",
       "<p style='margin:0'>a</p><p style='margin:0'>b</p><p>c", "a\nb\n\nc\n"},
      {"so are those of a word processor",
       "<p style='margin-top:12px; margin-bottom:0px'>a</p><p style='margin: 1em 2px 0'>b</p>c",
       "a\nb\nc\n"},
      {"other margins are margins", "<p style='margin: 0 0 1em'>a</p><p>b", "a\n\nb\n"},
  });
}

TEST(MailText, HasCellsApart) {
  check({
      {"cells have a tab between them", "<table><tr><td>one</td><td>two</td></tr></table>",
       "one\ttwo\n"},
      {"rows are lines", "<table><tr><th>a<th>b<tr><td>c<td>d</table>e", "a\tb\nc\td\ne\n"},
      {"paragraphs in cells", "<table><tr><td><p>a</p></td><td><p>b</p></td></tr></table>",
       "a\tb\n"},
      {"an empty cell keeps its place", "<table><tr><td>a<td><td>c</table>", "a\t\tc\n"},
      {"none at the end", "<table><tr><td>a<td><td></table>", "a\n"},
      {"a table in a cell",
       "<table><tr><td><table><tr><td>a<td>b</table></td><td>c</td></tr></table>", "a\tb\tc\n"},
      {"an empty first cell", "<table><tr><td><td>b<tr><td>c</table>", "\tb\nc\n"},
  });
}

TEST(MailText, HasLists) {
  check({
      {"items after a dash", "<ul><li>a</li><li>b</ul>", "- a\n- b\n"},
      {"numbers", "<ol start=9><li>a<li>b</ol>", "9. a\n10. b\n"},
      {"a list is a paragraph", "a<ul><li>b</ul>c", "a\n\n- b\n\nc\n"},
      {"a list in an item", "<ul><li>a<ol><li>b<li>c</ol><li>d</ul>", "- a\n  1. b\n  2. c\n- d\n"},
      {"a list behind an item", "<ul><li>a</li><ul><li>b</li></ul></ul>", "- a\n- b\n"},
      {"lines of an item stand below its text", "<ol><li>a<br>b<li>c</ol>", "1. a\n   b\n2. c\n"},
      {"paragraphs in items", "<ul><li><p>a</p><p>b</p></li><li><p>c</p></ul>",
       "- a\n\n  b\n\n- c\n"},
      {"an item without a list", "<li>a", "- a\n"},
      {"an empty item", "<ul><li></li><li>b</li></ul>", "- b\n"},
      {"a quote in an item", "<ul><li><blockquote>a</blockquote></ul>", "- > a\n"},
      {"a list that begins an item", "<ul><li><ul><li>a</ul></ul>", "  - a\n"},
  });
}

TEST(MailText, HasQuotes) {
  check({
      {"each line", "<blockquote>a<br>b</blockquote>c", "> a\n> b\n\nc\n"},
      {"an empty line of a quote has no blank at its end",
       "<blockquote><p>a</p><p>b</p></blockquote>", "> a\n>\n> b\n"},
      {"so has an empty line that was written", "<blockquote>a<br><br>b</blockquote>",
       "> a\n>\n> b\n"},
      {"a quote in a quote", "<blockquote>a<blockquote>b</blockquote>c</blockquote>",
       "> a\n>\n> > b\n>\n> c\n"},
      {"no more than sixteen are shown",
       [] {
         std::string deep;
         for (int i = 0; i < 20; ++i) {
           deep += "<blockquote>";
         }
         return deep + "a";
       }(),
       "> > > > > > > > > > > > > > > > a\n"},
      {"between quotes", "a<blockquote>b</blockquote><blockquote>c</blockquote>",
       "a\n\n> b\n>\n> c\n"},
      {"preformatted", "<blockquote><pre>a\n\n b</pre></blockquote>", "> a\n>\n>  b\n"},
      {"a list", "<blockquote><ul><li>a<li>b</ul></blockquote>", "> - a\n> - b\n"},
  });
}

TEST(MailText, HasLinksAfterTheirText) {
  check({
      {"the address follows", "<a href=\"https://x/?a&amp;b\">X</a>.", "X <https://x/?a&b>.\n"},
      {"not when it is the text", "<a href='https://x/'>https://x/</a>", "https://x/\n"},
      {"white space around the text", "<a href='https://x/'> https://x/ </a>", "https://x/\n"},
      {"without quotes", "<A class=y HREF=https://x/>X</A>", "X <https://x/>\n"},
      {"an anchor that is no link", "<a name=x>X</a>", "X\n"},
      {"a mail address that is the text", "<a href='mailto:a@b'>a@b</a>", "a@b\n"},
      {"one that is not", "<a href='mailto:a@b'>me</a>", "me <mailto:a@b>\n"},
      {"a blank at its end comes behind the address", "<a href='https://x/'>a </a>b",
       "a <https://x/> b\n"},
      {"several looks are one link", "<a href='https://x/'>a<b>b</b></a>c", "ab <https://x/>c\n"},
      {"several anchors of one link are one",
       "<a href='https://x/'>a</a><a href='https://x/'><b>b</b></a>", "ab <https://x/>\n"},
      {"blocks in a link", "<a href='https://x/'><h3>a</h3><div>b</div></a>c",
       "a\n\nb <https://x/>\nc\n"},
      {"in a cell", "<table><tr><td><a href='https://x/'>a</a><td>b</table>",
       "a <https://x/>\tb\n"},
      {"in a paragraph", "<p><a href='https://x/'>a</a></p><p>b</p>", "a <https://x/>\n\nb\n"},
      {"a link without text", "a<a href='https://x/'></a>b", "ab\n"},
      {"a picture in a link", "<a href='https://x/'><img src=y alt=Logo></a>",
       "Logo <https://x/>\n"},
      {"a link that never ends", "<a href='https://x/'>a<p>b", "a\n\nb <https://x/>\n"},
      {"what may not be a link is its text", "<a href='javascript:x'>a</a>", "a\n"},
  });
}

TEST(MailText, BreaksBetweenLinksThatTouch) {
  check({
      {"two links of a share",
       "<a href=\"https://x/\">https://x/</a><a href=\"https://y/\">https://y/</a>",
       "https://x/\nhttps://y/\n"},
      {"one link twice",
       "<a href=\"https://x/\">https://x/</a><a href=\"https://x/\">https://x/</a>",
       "https://x/\nhttps://x/\n"},
      {"with a text", "<a href='https://x/'>a</a><a href='https://y/'>b</a>",
       "a <https://x/>\nb <https://y/>\n"},
      {"not with a blank between them", "<a href='https://x/'>a</a> <a href='https://y/'>b</a>",
       "a <https://x/> b <https://y/>\n"},
      {"not between blocks", "<p><a href='https://x/'>a</a></p><p><a href='https://y/'>b</a>",
       "a <https://x/>\n\nb <https://y/>\n"},
  });
}

TEST(MailText, ReadsReferences) {
  check({
      {"names of letters", "Gr&uuml;&szlig;e", "Gr\u00FC\u00DFe\n"},
      {"names of signs", "&euro;&hellip;&ndash;&bull;&copy;&rarr;&hearts;",
       "\u20ac\u2026\u2013\u2022\u00a9\u2192\u2665\n"},
      {"markup and numbers", "&lt;&amp;&gt;&quot;&#65;&#x42;", "<&>\"AB\n"},
      {"what is no reference", "a & b &bogus; c", "a & b &bogus; c\n"},
      {"a sign that opens no tag", "1 < 2", "1 < 2\n"},
      {"a sign inside a value", "<a href=\"https://x>y\">z</a>", "z <https://x>y>\n"},
  });
}

TEST(MailText, HidesWhatIsHidden) {
  check({
      {"scripts and styles", "<style>x{}</style>a<script>if (1<2) b</script>c", "ac\n"},
      {"a title", "<title>t</title>a", "a\n"},
      {"templates", "a<template>b</template>c", "ac\n"},
      {"comments", "a<!-- <b> -->b", "ab\n"},
      {"a style that hides", "a<div style='display:none'>x</div>b", "ab\n"},
      {"an attribute that hides", "a<p hidden>x</p>b", "ab\n"},
      {"what hides inside", "<div style='display:none'><p style='display:block'>x</p></div>a",
       "a\n"},
      {"control characters", "a\x01\x07\u0085\x7F&#1;b", "ab\n"},
  });
}

TEST(MailText, GivesTheLinesOfATextThatWasShared) {
  const auto shared = [](const std::string& text) {
    const auto document = xml::html_document(platform::NSAttributedString(text));
    return std::string(document.begin(), document.end()) + "<br/>";
  };
  for (const std::string text :
       {"a\nb\n\nc\n", "a  b\n  c\n", "\ta\tb\n", "a <b> & \"c\"\n", "one\n"}) {
    EXPECT_EQ(text_of(shared(text)), text);
  }
  EXPECT_EQ(text_of(shared("a\nb") + "<a href=\"https://x/\">https://x/</a>"),
            "a\nb\n\nhttps://x/\n")
      << "a text and a link";
  EXPECT_EQ(text_of(shared("a\nb") + shared("c\nd")), "a\nb\n\nc\nd\n") << "two texts";
}

}  // namespace
}  // namespace quoll
