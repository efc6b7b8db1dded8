#include "quoll/linux/xml/text_form.h"

#include <utility>

#include "quoll/linux/xml/html_writer.h"

namespace quoll::xml {
namespace {

/// In bytes. Deeper quotes and items begin as those of this depth, so that a document of nothing
/// but line breaks is not made many times longer.
constexpr std::size_t kWidestIndent = 32;
constexpr int kParagraphLines = 2;

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

void TextForm::begin(const Element& element, const Inherited& inherited, Attributes attributes) {
  switch (element.role) {
    case Role::kBreak:
      builder_.line_break();
      break;
    case Role::kImage:
      builder_.text(value_of(attributes, "alt"), shown(inherited));
      break;
    case Role::kList:
      boundary(lists_.empty() ? kParagraphLines : 1);
      lists_.push_back(element.name == "ol" ? first_number(attributes) : kUnordered);
      break;
    case Role::kItem:
      begin_item();
      break;
    case Role::kCell:
      begin_cell();
      break;
    case Role::kRow:
      first_cell_ = true;
      boundary(1);
      break;
    case Role::kQuote:
      boundary(kParagraphLines);
      indent("> ");
      break;
    case Role::kParagraph:
    case Role::kPreformatted:
      boundary(kParagraphLines);
      break;
    case Role::kRule:
      boundary(1);
      if (plain_) {
        builder_.text("---", {});
      }
      break;
    case Role::kBody:
    case Role::kBlock:
    case Role::kTable:
      boundary(1);
      break;
    case Role::kInline:
    case Role::kAnchor:
    case Role::kHidden:
      break;
  }
}

const Look& TextForm::shown(const Inherited& inherited) const {
  static const Look kPlainLook;
  return plain_ ? kPlainLook : inherited.look;
}

void TextForm::begin_item() {
  boundary(1);
  const bool numbered = !lists_.empty() && lists_.back() != kUnordered;
  std::string marker = numbered ? std::to_string(lists_.back()++) + ". "
                       : plain_ ? "- "
                                : "\u2022 ";
  const std::size_t width = plain_ ? marker.size() : 0;
  builder_.set_marker(std::move(marker), width);
  indent(std::string(width, ' '));
}

void TextForm::begin_cell() {
  if (!first_cell_) {
    builder_.cell_boundary();
  }
  first_cell_ = false;
}

void TextForm::indent(std::string_view more) {
  const bool fits = plain_ && indented_ + more.size() <= kWidestIndent;
  indents_.push_back(fits ? more.size() : 0);
  if (fits) {
    builder_.indent(more);
    indented_ += more.size();
  }
}

void TextForm::end(const Element& element) {
  if (element.role == Role::kItem || element.role == Role::kQuote) {
    builder_.outdent(indents_.back());
    indented_ -= indents_.back();
    indents_.pop_back();
  }
  switch (element.role) {
    case Role::kList:
      lists_.pop_back();
      boundary(lists_.empty() ? kParagraphLines : 1);
      break;
    case Role::kItem:
    case Role::kRow:
      builder_.set_marker({});
      boundary(1);
      first_cell_ = false;
      break;
    case Role::kQuote:
    case Role::kParagraph:
    case Role::kPreformatted:
      boundary(kParagraphLines);
      break;
    case Role::kBody:
    case Role::kBlock:
    case Role::kRule:
    case Role::kTable:
      boundary(1);
      break;
    default:
      break;
  }
}

void TextForm::text(std::string_view text, const Inherited& inherited) {
  const Look& look = shown(inherited);
  if (inherited.blanks) {
    builder_.preserved_text(with_ordinary_blanks(text), look);
  } else if (inherited.preserved) {
    builder_.preserved_text(text, look);
  } else {
    builder_.text(text, look);
  }
}

void TextForm::add_paragraph(std::string_view text) {
  builder_.set_marker({});
  builder_.block_boundary(kParagraphLines);
  builder_.outdent(std::exchange(indented_, 0));
  builder_.text(text, {});
}

std::string TextForm::take_text() {
  auto runs = builder_.take();
  std::string text = runs.empty() ? std::string() : std::move(runs.front().text);
  const auto end = text.find_last_not_of(" \t\n");
  text.erase(end == std::string::npos ? 0 : end + 1);
  text.append(text.empty() ? "" : "\n");
  return text;
}

}  // namespace quoll::xml
