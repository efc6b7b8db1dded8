#include "quoll/linux/xml/document_reader.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "quoll/linux/xml/css.h"
#include "quoll/linux/xml/html_writer.h"

namespace quoll::xml {
namespace {

constexpr std::size_t kLongestLink = 8192;
constexpr std::array<std::string_view, 9> kAttributes{"alt",  "class", "color", "face", "hidden",
                                                      "href", "size",  "start", "style"};

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

std::string_view value_of(std::span<const DocumentReader::Attribute> attributes,
                          std::string_view name) {
  const auto found = std::ranges::find(attributes, name, &DocumentReader::Attribute::first);
  return found == attributes.end() ? std::string_view() : found->second;
}

void apply_font_element(Look& look, std::span<const DocumentReader::Attribute> attributes) {
  if (const auto colour = parse_colour(value_of(attributes, "color"))) {
    look.colour = colour;
  }
  if (auto font = first_family(value_of(attributes, "face")); !font.view().empty()) {
    look.font = std::move(font);
  }
  if (const double size = font_element_size(value_of(attributes, "size")); size > 0) {
    look.size = size;
  }
}

std::string with_ordinary_blanks(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool no_break = text.substr(at).starts_with(kNoBreakBlank);
    result += no_break ? ' ' : text[at];
    at += no_break ? 1 : 0;
  }
  return result;
}

}  // namespace

struct DocumentReader::Element {
  std::string_view name;
  Role role = Role::kInline;
  void (*apply)(Look&) = nullptr;
};

/// Sorted by name. An element that is not in the table changes nothing.
std::span<const DocumentReader::Element> DocumentReader::elements() {
  using enum Role;
  static constexpr auto kElements = std::to_array<Element>({
      {"a"},
      {"address", kBlock, italic},
      {"article", kBlock},
      {"aside", kBlock},
      {"b", kInline, bold},
      {"big", kInline, larger},
      {"blockquote", kBlock},
      {"body", kBlock},
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
      {"h1", kBlock, heading<240>},
      {"h2", kBlock, heading<180>},
      {"h3", kBlock, heading<140>},
      {"h4", kBlock, heading<120>},
      {"h5", kBlock, heading<100>},
      {"h6", kBlock, heading<80>},
      {"header", kBlock},
      {"hr", kBlock},
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
      {"p", kBlock},
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
      {"table", kBlock},
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
  return kElements;
}

const DocumentReader::Element& DocumentReader::element_named(std::string_view name) {
  static constexpr Element kUnknown{};
  const auto found = std::ranges::lower_bound(elements(), name, {}, &Element::name);
  return found != elements().end() && found->name == name ? *found : kUnknown;
}

std::vector<std::string_view> known_names() {
  std::vector<std::string_view> names(kAttributes.begin(), kAttributes.end());
  std::ranges::transform(DocumentReader::elements(), std::back_inserter(names),
                         &DocumentReader::Element::name);
  return names;
}

void DocumentReader::open(std::string_view name, std::span<const Attribute> attributes) {
  const Element& element = element_named(name);
  Inherited inherited = open_.empty() ? Inherited{} : open_.back().inherited;
  inherited.hidden = inherited.hidden || element.role == Role::kHidden ||
                     std::ranges::find(attributes, "hidden", &Attribute::first) != attributes.end();
  inherited.preserved = inherited.preserved || element.role == Role::kPreformatted;
  inherited.blanks = value_of(attributes, "class") == kBlanksClass;
  if (element.apply != nullptr) {
    element.apply(inherited.look);
  }
  if (name == "font") {
    apply_font_element(inherited.look, attributes);
  }
  if (name == "a") {
    const std::string_view link = trim_ascii(value_of(attributes, "href"));
    inherited.look.link = SharedText(link.size() <= kLongestLink ? link : std::string_view());
  }
  apply_style(inherited, value_of(attributes, "style"));
  if (!inherited.hidden) {
    begin(element, inherited, attributes);
  }
  open_.push_back({&element, std::move(inherited)});
}

void DocumentReader::begin(const Element& element, const Inherited& inherited,
                           std::span<const Attribute> attributes) {
  switch (element.role) {
    case Role::kBreak:
      builder_.line_break();
      break;
    case Role::kImage:
      builder_.text(value_of(attributes, "alt"), inherited.look);
      break;
    case Role::kList:
      begin_list(element, attributes);
      break;
    case Role::kItem:
      begin_item();
      break;
    case Role::kCell:
      begin_cell();
      break;
    case Role::kRow:
      first_cell_ = true;
      builder_.block_boundary();
      break;
    case Role::kPreformatted:
      skip_line_feed_ = true;
      builder_.block_boundary();
      break;
    case Role::kBlock:
      builder_.block_boundary();
      break;
    case Role::kInline:
    case Role::kHidden:
      break;
  }
}

void DocumentReader::begin_list(const Element& element, std::span<const Attribute> attributes) {
  builder_.block_boundary();
  if (element.name != "ol") {
    lists_.push_back(kUnordered);
    return;
  }
  const std::string_view start = trim_ascii(value_of(attributes, "start"));
  int first = 1;
  std::from_chars(start.data(), start.data() + start.size(), first);
  lists_.push_back(std::clamp(first, 0, 1'000'000));
}

void DocumentReader::begin_item() {
  builder_.block_boundary();
  const bool numbered = !lists_.empty() && lists_.back() != kUnordered;
  builder_.set_marker(numbered ? std::to_string(lists_.back()++) + ". " : "\u2022 ");
}

void DocumentReader::begin_cell() {
  if (!first_cell_) {
    builder_.cell_boundary();
  }
  first_cell_ = false;
}

void DocumentReader::close() {
  if (open_.empty()) {
    return;
  }
  const auto [element, inherited] = std::move(open_.back());
  open_.pop_back();
  if (inherited.hidden) {
    return;
  }
  switch (element->role) {
    case Role::kList:
      builder_.block_boundary();
      lists_.pop_back();
      break;
    case Role::kItem:
    case Role::kRow:
      builder_.set_marker({});
      builder_.block_boundary();
      break;
    case Role::kBlock:
    case Role::kPreformatted:
      builder_.block_boundary();
      break;
    default:
      break;
  }
}

void DocumentReader::text(std::string_view text) {
  static const Inherited kPlain;
  const Inherited& inherited = open_.empty() ? kPlain : open_.back().inherited;
  if (inherited.hidden) {
    return;
  }
  if (std::exchange(skip_line_feed_, false) && text.starts_with('\n')) {
    text.remove_prefix(1);
  }
  if (inherited.blanks) {
    builder_.preserved_text(with_ordinary_blanks(text), inherited.look);
  } else if (inherited.preserved) {
    builder_.preserved_text(text, inherited.look);
  } else {
    builder_.text(text, inherited.look);
  }
}

}  // namespace quoll::xml
