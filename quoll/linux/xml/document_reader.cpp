#include "quoll/linux/xml/document_reader.h"

#include <algorithm>
#include <utility>

#include "quoll/linux/xml/allowed_link.h"
#include "quoll/linux/xml/css.h"
#include "quoll/linux/xml/html_writer.h"

namespace quoll::xml {
namespace {

constexpr std::string_view kSheetElement = "style";

void apply_font_element(Look& look, Attributes attributes) {
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

/// What the element passes on.
Inherited inherited_by(const Element& element, const Inherited& outer, Attributes attributes) {
  Inherited inherited = outer;
  inherited.hidden = inherited.hidden || element.role == Role::kHidden ||
                     std::ranges::find(attributes, "hidden", &Attribute::first) != attributes.end();
  inherited.preserved = inherited.preserved || element.role == Role::kPreformatted;
  inherited.blanks = value_of(attributes, "class") == kBlanksClass;
  inherited.close = false;
  if (element.apply != nullptr) {
    element.apply(inherited.look);
  }
  if (const auto colour = parse_colour(value_of(attributes, "bgcolor"))) {
    inherited.look.background = colour;
  }
  if (element.name == "font") {
    apply_font_element(inherited.look, attributes);
  }
  if (element.role == Role::kAnchor) {
    inherited.look.link = SharedText(allowed_link(value_of(attributes, "href")));
  }
  apply_style(inherited, value_of(attributes, "style"));
  return inherited;
}

}  // namespace

void DocumentReader::open(std::string_view name, Attributes attributes) {
  static const Inherited kPlain;
  const Element* element = &element_named(name);
  Inherited inherited =
      inherited_by(*element, open_.empty() ? kPlain : open_.back().inherited, attributes);
  if (name == "p" && (inherited.close || close_paragraphs_)) {
    element = &element_named("div");  // it looks the same
  }
  if (!inherited.hidden) {
    skip_line_feed_ = skip_line_feed_ || element->role == Role::kPreformatted;
    form_.begin(*element, inherited, attributes);
  }
  open_.push_back({element, std::move(inherited)});
}

void DocumentReader::close() {
  if (open_.empty()) {
    return;
  }
  const auto [element, inherited] = std::move(open_.back());
  open_.pop_back();
  if (!inherited.hidden) {
    form_.end(*element);
  } else if (element->name == kSheetElement) {
    const std::string sheet = std::exchange(sheet_, {});
    close_paragraphs_ = close_paragraphs_ || trim_ascii(sheet) == kParagraphRule;
  }
}

void DocumentReader::text(std::string_view text) {
  static const Inherited kPlain;
  const Inherited& inherited = open_.empty() ? kPlain : open_.back().inherited;
  if (inherited.hidden) {
    const bool may_matter = sheet_.size() <= 2 * kParagraphRule.size();
    if (open_.back().element->name == kSheetElement && may_matter) {
      sheet_.append(text.substr(0, 2 * kParagraphRule.size()));
    }
    return;
  }
  if (std::exchange(skip_line_feed_, false) && text.starts_with('\n')) {
    text.remove_prefix(1);
  }
  form_.text(text, inherited);
}

}  // namespace quoll::xml
