// Makes the bodies of a mail of any bytes. The HTML has only tags and attributes that the writer
// knows, each closed, and only allowed links; reading it again gives it again. The text has no
// control characters.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/require.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/xml/html_reader.h"

extern "C" quoll::xml::ReadMail quoll_read_mail;

namespace {

using quoll::fuzz::require;
using quoll::xml::MailBodies;

constexpr std::string_view kOpening =
    "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n</head>\n<body>\n";
constexpr std::string_view kClosing = "</body>\n</html>\n";

constexpr auto kTags = std::to_array<std::string_view>(
    {"a",  "b",  "blockquote", "code", "div", "h1", "h2",   "h3", "h4",    "h5", "h6", "i",
     "li", "ol", "p",          "pre",  "s",   "td", "span", "th", "table", "tr", "u",  "ul"});
constexpr auto kVoid = std::to_array<std::string_view>({"br", "hr", "img"});
constexpr auto kAttributes =
    std::to_array<std::string_view>({"alt", "border", "colspan", "height", "href", "rowspan", "src",
                                     "start", "style", "type", "width"});
constexpr auto kProperties =
    std::to_array<std::string_view>({"background-color", "color", "font-family", "font-size",
                                     "font-style", "font-weight", "white-space"});
constexpr auto kSchemes =
    std::to_array<std::string_view>({"http", "https", "mailto", "ftp", "tel"});

template <typename Names>
bool has(const Names& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

MailBodies bodies_of(std::string_view html) {
  MailBodies bodies;
  require(quoll_read_mail(html.data(), html.size(), &bodies) == nullptr);
  return bodies;
}

/// Removes what is before `mark`, and `mark`, from the beginning of `rest`.
std::string_view take_until(std::string_view& rest, std::string_view mark) {
  const std::size_t end = rest.find(mark);
  require(end != std::string_view::npos);
  const std::string_view taken = rest.substr(0, end);
  rest.remove_prefix(end + mark.size());
  return taken;
}

void check_style(std::string_view style) {
  while (!style.empty()) {
    const std::size_t end = std::min(style.find("; "), style.size());
    std::string_view declaration = style.substr(0, end);
    require(has(kProperties, take_until(declaration, ": ")));
    require(declaration.find_first_of("()\\:;@") == std::string_view::npos);
    style.remove_prefix(std::min(end + 2, style.size()));
  }
}

void check_attributes(std::string_view rest) {
  while (!rest.empty()) {
    require(rest.starts_with(' '));
    rest.remove_prefix(1);
    const std::string_view name = take_until(rest, "=\"");
    const std::string_view value = take_until(rest, "\"");
    require(has(kAttributes, name));
    const std::string scheme =
        quoll::foundation::ascii_lower_case(value.substr(0, value.find(':')));
    require(name != "href" || has(kSchemes, scheme));
    require(name != "src" || scheme == "cid");
    if (name == "style") {
      check_style(value);
    }
  }
}

void check_tag(std::string_view tag, std::vector<std::string_view>& open) {
  if (tag.starts_with('/')) {
    require(!open.empty() && open.back() == tag.substr(1));
    open.pop_back();
    return;
  }
  const std::string_view name = tag.substr(0, tag.find(' '));
  require(has(kTags, name) || has(kVoid, name));
  check_attributes(tag.substr(name.size()));
  if (!has(kVoid, name)) {
    open.push_back(name);
  }
}

void check_characters(std::string_view text) {
  require(quoll::foundation::is_utf8(text));
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    require(byte == '\t' || byte == '\n' || (byte >= 0x20 && byte != 0x7F));
    require(byte != 0xC2 || static_cast<unsigned char>(text[at + 1]) >= 0xA0);
  }
}

void check_html(std::string_view html) {
  check_characters(html);
  require(html.starts_with(kOpening) && html.ends_with(kClosing));
  html.remove_prefix(kOpening.size());
  html.remove_suffix(kClosing.size());
  std::vector<std::string_view> open;
  while (!html.empty()) {
    if (html[0] == '<') {
      html.remove_prefix(1);
      check_tag(take_until(html, ">"), open);
      continue;
    }
    require(html[0] != '>' && html[0] != '"');
    if (html[0] == '&') {
      const std::string_view name = html.substr(1, std::min(html.find(';'), html.size()) - 1);
      require(name == "amp" || name == "lt" || name == "gt" || name == "quot");
    }
    html.remove_prefix(1);
  }
  require(open.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view html(reinterpret_cast<const char*>(data), size);
  if (!quoll::foundation::is_utf8(html)) {
    return 0;
  }
  const MailBodies bodies = bodies_of(html);
  check_html(bodies.html);
  check_characters(bodies.text);
  require(bodies.text.empty() || bodies.text.ends_with('\n'));
  require(bodies_of(bodies.html).html == bodies.html);
  return 0;
}
