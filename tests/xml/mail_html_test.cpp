// The HTML of a mail that is made of a page's HTML.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quoll/linux/xml/html_writer.h"
#include "quoll/linux/xml/mail_form.h"
#include "quoll/linux/xml/styled_text.h"

namespace quoll {
namespace {

constexpr std::string_view kOpening =
    "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n</head>\n<body>\n";
constexpr std::string_view kClosing = "</body>\n</html>\n";

/// What is inside the body, without the line feeds around it. Reading it again must not change it.
std::string body_of(const std::string& html) {
  const std::string document = xml::mail_bodies(html).html;
  EXPECT_TRUE(document.starts_with(kOpening) && document.ends_with(kClosing)) << document;
  EXPECT_EQ(xml::mail_bodies(document).html, document) << html;
  std::string body =
      document.substr(kOpening.size(), document.size() - kOpening.size() - kClosing.size());
  while (body.ends_with('\n')) {
    body.pop_back();
  }
  return body;
}

struct Row {
  const char* reason;
  std::string html;
  std::string body;
};

void check(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    EXPECT_EQ(body_of(row.html), row.body) << row.reason << ": " << row.html;
  }
}

TEST(MailHtml, KeepsTheElementsOfMail) {
  check({
      {"nothing", "", ""},
      {"a text", "a &amp; b", "a &amp; b"},
      {"paragraphs", "<p>a<p>b", "<p>a</p>\n<p>b</p>"},
      {"blocks", "<section>a<article>b</article></section>c", "<div>a<div>b</div>\n</div>\nc"},
      {"breaks", "a<br>b<br/>c", "a<br>b<br>c"},
      {"headings", "<h1>a</h1><h6>b</h6>", "<h1>a</h1>\n<h6>b</h6>"},
      {"a rule", "a<hr>b", "a<hr>\nb"},
      {"a rule where white space is kept", "<div style='white-space:pre'>a<hr>b</div>",
       "<div style=\"white-space: pre-wrap\">a<hr>b</div>"},
      {"preformatted", "<pre>\n\na <b>b</b>\n</pre>", "<pre>\n\na <b>b</b>\n</pre>"},
      {"code", "<code>a</code><kbd>b</kbd>", "<code>ab</code>"},
      {"looks of text", "<b>a</b><i>b</i><u>c</u><s>d</s><strong>e<em>f</em></strong>",
       "<b>a</b><i>b</i><u>c</u><s>d</s><b>e</b><b><i>f</i></b>"},
      {"a list", "<ul><li>a<li>b</ul>", "<ul><li>a</li>\n<li>b</li>\n</ul>"},
      {"a numbered list", "<ol start='03'><li>a</ol>", "<ol start=\"3\"><li>a</li>\n</ol>"},
      {"a list in an item", "<ul><li>a<ul><li>b</ul></ul>",
       "<ul><li>a<ul><li>b</li>\n</ul>\n</li>\n</ul>"},
      {"a quote", "<blockquote type=cite class=x>a</blockquote>",
       "<blockquote type=\"cite\">a</blockquote>"},
      {"a table",
       "<table border=1 width=9><caption>x</caption><thead><tr><th colspan=2>a</thead>"
       "<tr><td rowspan='3'>b<td colspan=0>c</table>",
       "<table border=\"1\"><tr><td><div>x</div>\n</td>\n</tr>\n"
       "<tr><th colspan=\"2\">a</th>\n</tr>\n"
       "<tr><td rowspan=\"3\">b</td>\n<td>c</td>\n</tr>\n</table>"},
      {"a link", "<a href=' https://x/?a&amp;b ' target=_blank>a<b>b</b></a>",
       "<a href=\"https://x/?a&amp;b\">a<b>b</b></a>"},
      {"a picture of the message", "<img src='CID:a@b' alt='x\ny' width=10 height=9999999>",
       "<img src=\"CID:a@b\" alt=\"x y\" width=\"10\" height=\"10000\">"},
      {"a picture in a link", "<a href='http://x'><img src=cid:1></a>",
       "<a href=\"http://x\"><img src=\"cid:1\" alt=\"\"></a>"},
      {"styles", "<p style='color:red; background:#ABC; font-family:\"A b\",serif'>a",
       "<p style=\"font-family: 'A b'; color: #ff0000; background-color: #aabbcc\">a</p>"},
      {"sizes become points",
       "<div style='font-size:16px'>a<span style='font-size:2em'>b</span></div>",
       "<div style=\"font-size: 12pt\">a<span style=\"font-size: 24pt\">b</span></div>"},
      {"what an element takes back", "<b>a<span style='font-weight:normal'>b</span></b>",
       "<b>a</b>b"},
      {"what a block takes back", "<th>a<h1 style='font-weight:normal'>b",
       "<table><tr><th>a<h1 style=\"font-weight: normal\">b</h1>\n</th>\n</tr>\n</table>"},
      {"the page's own look", "<body bgcolor=black text=white><p>a",
       "<div style=\"background-color: #000000\"><p><span style=\"color: #ffffff\">a</span></p>\n"
       "</div>"},
      {"white space that is kept", "<div style='white-space:pre-wrap'>a  b\nc</div>",
       "<div style=\"white-space: pre-wrap\">a  b\nc</div>"},
      {"a tab", "a<span style='white-space: pre'>\t</span>b",
       "a<span style=\"white-space: pre-wrap\">\t</span>b"},
      {"a blank belongs to the look it had", "<u>a </u>b <i>c</i><u> d</u>",
       "<u>a </u>b <i>c</i><u> d</u>"},
      {"upper case", "<P ALIGN=x>a<B>b</B>", "<p>a<b>b</b></p>"},
  });
}

TEST(MailHtml, DropsWhatIsNotMail) {
  check({
      {"scripts", "a<script>alert('<p>')</script>b", "ab"},
      {"style sheets", "<style>@import 'x'; p { display: none }</style><p>a", "<p>a</p>"},
      {"handlers", "<p onclick=x onmouseover='y'>a<img src=cid:1 onerror=z>",
       "<p>a<img src=\"cid:1\" alt=\"\"></p>"},
      {"forms", "<form action=x><input type=hidden value=s><button formaction=y>a</button></form>",
       "<div>a</div>"},
      {"frames and objects", "<iframe src=x></iframe><object data=y></object><embed src=z>a", "a"},
      {"what a document says of itself",
       "<base href='http://evil/'><meta http-equiv=refresh content='0;url=x'><link rel=stylesheet "
       "href=y><title>t</title><body>a",
       "a"},
      {"comments", "a<!-- <script> --><!--[if mso]>b<![endif]-->c", "ac"},
      {"a drawing", "<svg onload=x><a xlink:href='javascript:y'>a</a></svg>", "a"},
      {"pictures from elsewhere", "<img src='http://x/track.gif' alt=a><img src=data:image/png,x>",
       "a"},
      {"classes and names", "<p id=a class=b name=c dir=rtl>a", "<p>a</p>"},
      {"control characters", "a\x01\u0085&#2;b\x7F", "ab"},
      {"a byte that is not UTF-8", "a\xFF", "a%FF"},
  });
}

TEST(MailHtml, HidesNothing) {
  check({
      {"text that the style hides is left out", "a<p style='display:none'>x</p>", "a"},
      {"with another spelling", "a<span style='DISPLAY\t:\tNONE !important'>x</span>", "a"},
      {"text that the attribute hides", "a<p hidden>x</p>", "a"},
      {"a template", "a<template>x</template>", "a"},
      {"invisible text is shown", "<p style='visibility:hidden;opacity:0'>a", "<p>a</p>"},
      {"small text is made larger", "<p style='font-size:1px'>a",
       "<p style=\"font-size: 6pt\">a</p>"},
      {"text without a height is shown", "<div style='max-height:0;overflow:hidden'>a</div>",
       "<div>a</div>"},
      {"text beside the page is shown", "<p style='position:absolute;left:-9999px'>a", "<p>a</p>"},
      {"white on white", "<p style='color:#fff'>a",
       "<p style=\"color: #ffffff\"><span style=\"color: #000000\">a</span></p>"},
      {"nearly white on white", "<font color=#fafafa>a</font>",
       "<span style=\"color: #000000\">a</span>"},
      {"black on black", "<p style='background:black'>a",
       "<p style=\"background-color: #000000\"><span style=\"color: #ffffff\">a</span></p>"},
      {"white on a coloured cell", "<table><tr><td bgcolor=navy><font color=white>a</font></table>",
       "<table><tr><td style=\"background-color: #000080\"><span style=\"color: #ffffff\">a</span>"
       "</td>\n</tr>\n</table>"},
      {"a picture behind text", "<p style='background:url(http://x);color:#fff'>a",
       "<p style=\"color: #ffffff\"><span style=\"color: #000000\">a</span></p>"},
      {"a font's name that is none", "<p style='font-family:\"x;}url(y)\"'>a", "<p>a</p>"},
      {"an expression", "<p style='color:expression(x);behavior:url(y)'>a", "<p>a</p>"},
  });
}

TEST(MailHtml, KeepsLinksOfFiveSchemesOnly) {
  for (const std::string link :
       {"http://x", "https://x/?a=b", "mailto:a@b", "ftp://x", "tel:+12", "HTTPS://X", "http:x"}) {
    EXPECT_EQ(body_of("<a href=\"" + link + "\">a</a>"), "<a href=\"" + link + "\">a</a>");
  }
  for (const std::string link : {"javascript:alert(1)",
                                 "JavaScript:x",
                                 "java\nscript:x",
                                 "java&#10;script:x",
                                 "&#106;avascript:x",
                                 "&#x6A;&#x61;vascript&colon;x",
                                 " \x01javascript:x",
                                 "java\x01script:x",
                                 "data:text/html,x",
                                 "file:///etc/passwd",
                                 "vbscript:x",
                                 "quoll://compose",
                                 "blob:x",
                                 "about:blank",
                                 "cid:x",
                                 "view-source:http://x",
                                 "//host/path",
                                 "/path",
                                 "page.html",
                                 "#top",
                                 "",
                                 ":",
                                 "http",
                                 "\u0430http:x",
                                 "h\u00A0ttp:x"}) {
    EXPECT_EQ(body_of("<a href=\"" + link + "\">a</a>"), "a") << link;
  }
  EXPECT_EQ(body_of("<a href=\"ht\ntps://x/\n\">a</a>"), "<a href=\"https://x/\">a</a>");
  EXPECT_EQ(body_of("<a href='javascript:x' href='http://y'>a</a>"), "a") << "the first one counts";
  EXPECT_EQ(body_of("<a href='http://x/\"&lt;'>a</a>"), "<a href=\"http://x/&quot;&lt;\">a</a>");
}

TEST(MailHtml, PutsThingsWhereTheyBelong) {
  check({
      {"a block in a paragraph", "<p>a<o:p><div>b</div></o:p>c</p>d",
       "<p>a</p>\n<div>b</div>\nc<br>d"},
      {"a block in a word", "<b>a<div>b</div></b>",
       "<b>a</b><div style=\"font-weight: bold\">b</div>"},
      {"a block in a link", "<a href='http://x'><div>a</div></a>",
       "<div><a href=\"http://x\">a</a></div>"},
      {"items without a list", "<li>a<li>b<p>c", "<ul><li>a</li>\n<li>b<p>c</p>\n</li>\n</ul>"},
      {"cells without a table", "<td>a<td>b", "<table><tr><td>a</td>\n<td>b</td>\n</tr>\n</table>"},
      {"cells without a row", "<table><td>a<td>b</table>",
       "<table><tr><td>a</td>\n<td>b</td>\n</tr>\n</table>"},
      {"text in a table", "<table>a<tr>b<td>c</td></tr></table>",
       "<table><tr><td>a</td>\n</tr>\n<tr><td>b</td>\n<td>c</td>\n</tr>\n</table>"},
      {"text in a list", "<ul>a<li>b</ul>", "<ul><li>a</li>\n<li>b</li>\n</ul>"},
      {"a list behind an item", "<ul><li>a</li> <ul><li>b</li></ul></ul>",
       "<ul><li>a<ul><li>b</li>\n</ul>\n</li>\n</ul>"},
      {"a line that ends where a block does, on a dark page",
       "<body bgcolor=black><p>a<o:p><div>b</div></o:p>c</p>d",
       "<div style=\"background-color: #000000\"><p><span style=\"color: #ffffff\">a</span></p>\n"
       "<div><span style=\"color: #ffffff\">b</span></div>\n"
       "<span style=\"color: #ffffff\">c</span><br><span style=\"color: #ffffff\">d</span></div>"},
      {"breaks between rows", "<table><br><tr><br><td>a</table>",
       "<table><tr><td>a</td>\n</tr>\n</table>"},
      {"crossing elements", "<b>a<i>b</b>c</i>d", "<b>a</b><b><i>b</i></b>cd"},
      {"ends that fit nothing", "a</b></table>b</td>", "ab"},
  });
}

TEST(MailHtml, BreaksBetweenLinksThatTouch) {
  const std::string x = "<a href=\"https://x/\">https://x/</a>";
  const std::string y = "<a href=\"https://y/\">https://y/</a>";
  check({
      {"two links of a share", x + y, x + "<br>" + y},
      {"one link twice", x + x, x + "<br>" + x},
      {"three", x + y + x, x + "<br>" + y + "<br>" + x},
      {"not with a blank between them", x + " " + y, x + " " + y},
      {"one link in two looks", "<a href='https://x/'><b>a</b></a><a href='https://x/'>b</a>",
       "<a href=\"https://x/\"><b>a</b>b</a>"},
  });
}

/// The runs that a document is read as.
std::vector<platform::TextRun> runs_of(const std::string& html) {
  static const auto kReader = xml::make_styled_text(true);
  const auto text = kReader->from_html(html);
  return text ? text->runs() : std::vector<platform::TextRun>{};
}

TEST(MailHtml, ShowsAShareAsItWasWritten) {
  const std::vector<platform::TextRun> runs{
      {"plain ", {}},
      {"bold", {.bold = true}},
      {"\n\nred\n", {.colour = 0xFF0000, .background = 0xFFFFFF, .size = 13.5}},
      {"a link", {.link = "https://example.org/"}},
      {" <i> & ", {.italic = true, .underline = true, .strikethrough = true, .font = "Sans Serif"}},
      {"mono", {.font = "monospace"}},
      {"\tend", {}}};
  const auto written = xml::html_document(platform::NSAttributedString(runs));
  const std::string document(written.begin(), written.end());
  EXPECT_EQ(
      body_of(document),
      "<div>plain <b>bold</b></div>\n<div><br></div>\n"
      "<div><span style=\"font-size: 13.5pt; color: #ff0000; background-color: #ffffff\">red"
      "</span></div>\n"
      "<div><a href=\"https://example.org/\">a link</a>"
      "<span style=\"font-family: 'Sans Serif'\"><i><u><s> &lt;i&gt; &amp; </s></u></i></span>"
      "<code>mono</code><span style=\"white-space: pre-wrap\">\t</span>end</div>");
  EXPECT_EQ(runs_of(xml::mail_bodies(document).html), runs_of(document));
}

TEST(StyledLinks, HaveFiveSchemesOnly) {
  const auto link_of = [](const std::string& link) {
    const auto runs = runs_of("<a href=\"" + link + "\">a</a>");
    return runs.size() == 1 && runs[0].text == "a" ? runs[0].attributes.link : "no text";
  };
  for (const std::string link :
       {"http://x", "https://x/", "mailto:a@b", "ftp://x", "tel:+12", "HTTP://X"}) {
    EXPECT_EQ(link_of(link), link);
  }
  for (const std::string link :
       {"javascript:x", "JAVASCRIPT:x", "java\nscript:x", "data:text/html,x", "file:///etc/passwd",
        "quoll://compose", "page.html"}) {
    EXPECT_EQ(link_of(link), "") << link;
  }
}

}  // namespace
}  // namespace quoll
