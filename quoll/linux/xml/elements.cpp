#include "quoll/linux/xml/elements.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

#include "quoll/linux/xml/css.h"

namespace quoll::xml {
namespace {

constexpr std::array<std::string_view, 17> kAttributes{
    "alt",  "bgcolor", "border", "class", "color", "colspan", "face", "height", "hidden",
    "href", "rowspan", "size",   "src",   "start", "style",   "type", "width"};

void bold(Look& look) {
  look.bold = true;
}
void italic(Look& look) {
  look.italic = true;
}
void underline(Look& look) {
  look.underline = true;
}
void strikethrough(Look& look) {
  look.strikethrough = true;
}
void monospace(Look& look) {
  look.font = SharedText("monospace");
}
void marked(Look& look) {
  look.background = 0xFFFF00;
}
void larger(Look& look) {
  look.size = (look.size > 0 ? look.size : 12) * 1.2;
}
void smaller(Look& look) {
  look.size = (look.size > 0 ? look.size : 12) / 1.2;
}
template <int kTenths>
void heading(Look& look) {
  look.bold = true;
  look.size = kTenths / 10.0;
}

using enum Role;

/// Sorted by name. An element that is not in the table changes nothing.
constexpr auto kElements = std::to_array<Element>({
    {"a", kAnchor},
    {"address", kBlock, italic},
    {"article", kBlock},
    {"aside", kBlock},
    {"b", kInline, bold},
    {"big", kInline, larger},
    {"blockquote", kQuote},
    {"body", kBody},
    {"br", kBreak},
    {"caption", kBlock},
    {"center", kBlock},
    {"cite", kInline, italic},
    {"code", kInline, monospace},
    {"dd", kBlock},
    {"del", kInline, strikethrough},
    {"details", kBlock},
    {"dfn", kInline, italic},
    {"dir", kList},
    {"div", kBlock},
    {"dl", kBlock},
    {"dt", kBlock},
    {"em", kInline, italic},
    {"fieldset", kBlock},
    {"figcaption", kBlock},
    {"figure", kBlock},
    {"font"},
    {"footer", kBlock},
    {"form", kBlock},
    {"h1", kParagraph, heading<240>},
    {"h2", kParagraph, heading<180>},
    {"h3", kParagraph, heading<140>},
    {"h4", kParagraph, heading<120>},
    {"h5", kParagraph, heading<100>},
    {"h6", kParagraph, heading<80>},
    {"header", kBlock},
    {"hr", kRule},
    {"i", kInline, italic},
    {"img", kImage},
    {"ins", kInline, underline},
    {"kbd", kInline, monospace},
    {"li", kItem},
    {"main", kBlock},
    {"mark", kInline, marked},
    {"menu", kList},
    {"nav", kBlock},
    {"ol", kList},
    {"p", kParagraph},
    {"pre", kPreformatted, monospace},
    {"s", kInline, strikethrough},
    {"samp", kInline, monospace},
    {"script", kHidden},
    {"section", kBlock},
    {"small", kInline, smaller},
    {"span"},
    {"strike", kInline, strikethrough},
    {"strong", kInline, bold},
    {"style", kHidden},
    {"summary", kBlock},
    {"table", kTable},
    {"td", kCell},
    {"template", kHidden},
    {"th", kCell, bold},
    {"title", kHidden},
    {"tr", kRow},
    {"tt", kInline, monospace},
    {"u", kInline, underline},
    {"ul", kList},
    {"var", kInline, italic},
});
static_assert(std::ranges::is_sorted(kElements, {}, &Element::name));

}  // namespace

const Element& element_named(std::string_view name) {
  static constexpr Element kUnknown{};
  const auto* found = std::ranges::lower_bound(kElements, name, {}, &Element::name);
  return found != kElements.end() && found->name == name ? *found : kUnknown;
}

bool is_block(Role role) {
  return role != kInline && role != kAnchor && role != kHidden && role != kBreak && role != kImage;
}

std::vector<std::string_view> known_names() {
  std::vector<std::string_view> names(kAttributes.begin(), kAttributes.end());
  std::ranges::transform(kElements, std::back_inserter(names), &Element::name);
  return names;
}

std::string_view value_of(Attributes attributes, std::string_view name) {
  const auto found = std::ranges::find(attributes, name, &Attribute::first);
  return found == attributes.end() ? std::string_view() : found->second;
}

int number_of(Attributes attributes, std::string_view name, int least, int most, int absent) {
  const std::string_view text = trim_ascii(value_of(attributes, name));
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() ? std::clamp(number, least, most) : absent;
}

int first_number(Attributes attributes) {
  return number_of(attributes, "start", 0, 1'000'000, 1);
}

}  // namespace quoll::xml
