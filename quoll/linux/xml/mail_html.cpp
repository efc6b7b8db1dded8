#include "quoll/linux/xml/mail_html.h"

#include <algorithm>
#include <utility>

#include "quoll/linux/xml/allowed_link.h"
#include "quoll/linux/xml/css.h"
#include "quoll/linux/xml/mail_look.h"
#include "quoll/linux/xml/markup.h"

namespace quoll::xml {
namespace {

/// Blocks inside one another. Programs that show mail work through them recursively.
constexpr std::size_t kDeepest = 128;
constexpr std::string_view kOpening =
    "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n</head>\n<body>\n";
constexpr std::string_view kClosing = "</body>\n</html>\n";

/// The attribute, if it is a number that differs from `least`.
void add_number(std::string& tag, Attributes attributes, std::string_view name, int least,
                int most) {
  const int number = number_of(attributes, name, least, most, least);
  if (number != least) {
    add_attribute(tag, name, std::to_string(number));
  }
}

std::string structure_attributes(const Element& element, Attributes attributes) {
  std::string tag;
  if (element.role == Role::kTable) {
    add_number(tag, attributes, "border", 0, 9);
  } else if (element.role == Role::kCell) {
    add_number(tag, attributes, "colspan", 1, 1000);
    add_number(tag, attributes, "rowspan", 1, 1000);
  } else if (element.name == "ol" && first_number(attributes) != 1) {
    add_attribute(tag, "start", std::to_string(first_number(attributes)));
  } else if (element.role == Role::kQuote && value_of(attributes, "type") == "cite") {
    add_attribute(tag, "type", "cite");
  }
  return tag;
}

/// The look of a block: that of its text without what belongs to single words.
Look block_look(const Look& look, const Look& around) {
  Look block = usable_look(look, around);
  block.underline = block.strikethrough = false;
  block.link = {};
  return block;
}

bool is_white(char byte) {
  return kWhite.find(byte) != std::string_view::npos;
}

/// The text without line breaks and control characters.
std::string one_line(std::string_view text) {
  std::string spaced(text);
  std::ranges::replace_if(spaced, is_white, ' ');
  std::string line;
  without_controls(spaced, [&line](std::string_view piece) { line += piece; });
  return std::string(trim_ascii(line));
}

}  // namespace

MailHtml::MailHtml() : out_(kOpening), blocks_{{.kind = Kind::kFlow, .tag = "body"}} {}

bool MailHtml::fits(Kind parent, Kind child) {
  switch (parent) {
    case Kind::kLine:
      return child == Kind::kText;
    case Kind::kList:
      return child == Kind::kItem;
    case Kind::kEndedItem:
      return child == Kind::kList;
    case Kind::kTable:
      return child == Kind::kRow;
    case Kind::kRow:
      return child == Kind::kCell;
    default:
      return child != Kind::kItem && child != Kind::kRow && child != Kind::kCell;
  }
}

/// What has to stand between the two.
MailHtml::Kind MailHtml::missing(Kind parent, Kind child) {
  if (child == Kind::kItem || parent == Kind::kList) {
    return child == Kind::kItem ? Kind::kList : Kind::kItem;
  }
  if (child == Kind::kRow) {
    return Kind::kTable;
  }
  return child == Kind::kCell || parent == Kind::kTable ? Kind::kRow : Kind::kCell;
}

MailHtml::Kind MailHtml::kind_of(const Element& element) {
  switch (element.role) {
    case Role::kParagraph:
    case Role::kPreformatted:
      return Kind::kLine;
    case Role::kList:
      return Kind::kList;
    case Role::kItem:
      return Kind::kItem;
    case Role::kTable:
      return Kind::kTable;
    case Role::kRow:
      return Kind::kRow;
    case Role::kCell:
      return Kind::kCell;
    default:
      return Kind::kFlow;
  }
}

void MailHtml::begin(const Element& element, const Inherited& inherited, Attributes attributes) {
  if (element.role == Role::kBreak) {
    line_break(inherited);
  } else if (element.role == Role::kImage) {
    picture(inherited, attributes);
  } else if (is_block(element.role)) {
    owned_.emplace_back(0, 0);
    open(element, inherited, attributes);
  }
}

void MailHtml::open(const Element& element, const Inherited& inherited, Attributes attributes) {
  const Kind kind = kind_of(element);
  const bool is_part = kind == Kind::kItem || kind == Kind::kRow || kind == Kind::kCell;
  give_way(kind);
  if (blocks_.size() > kDeepest && !(is_part && fits(top().kind, kind))) {
    end_line();
    return;
  }
  make_room(kind);
  if (element.role == Role::kRule) {
    tags_.close(out_);
    out_ += "<hr>";
    begin_line_behind_block();
    return;
  }
  const std::string_view tag = kind == Kind::kFlow && element.role != Role::kQuote ? "div"
                               : kind == Kind::kList && element.name != "ol"       ? "ul"
                                                                                   : element.name;
  Block block = inside(kind, tag);
  const Look look = block_look(inherited.look, block.look);
  const std::string style = style_between(block.look, block.preserved, look, inherited.preserved);
  if (element.role == Role::kBody && style.empty()) {
    end_line();
    return;
  }
  block.look = look;
  block.preserved = inherited.preserved;
  std::string written = structure_attributes(element, attributes);
  if (!style.empty()) {
    add_attribute(written, "style", style);
  }
  push(std::move(block), written);
  owned_.back() = {blocks_.size(), top().number};
}

MailHtml::Block MailHtml::inside(Kind kind, std::string_view tag) {
  const Element& element = element_named(tag);
  Block block{.kind = kind, .tag = tag, .look = top().look, .preserved = top().preserved};
  if (element.apply != nullptr) {
    element.apply(block.look);
  }
  block.preserved = block.preserved || element.role == Role::kPreformatted;
  block.gives_way = kind == Kind::kLine;
  block.number = ++last_number_;
  return block;
}

void MailHtml::push(Block block, std::string_view attributes) {
  tags_.close(out_);
  out_.append("<").append(block.tag).append(attributes) += '>';
  if (block.tag == "pre") {
    out_ += '\n';  // the reader drops the first one
  }
  blocks_.push_back(std::move(block));
  begin_line();
}

void MailHtml::begin_line() {
  line_has_content_ = break_pending_ = blank_pending_ = false;
}

void MailHtml::close_block() {
  tags_.close(out_);
  out_.append("</").append(top().tag) += '>';
  blocks_.pop_back();
  begin_line_behind_block();
}

void MailHtml::begin_line_behind_block() {
  if (!top().preserved) {
    out_ += '\n';
  }
  begin_line();
}

void MailHtml::give_way(Kind child) {
  while (top().gives_way && !fits(top().kind, child)) {
    close_block();
  }
}

/// Recurses for missing blocks inside missing ones, of which there are few.
void MailHtml::make_room(Kind child) {  // NOLINT(misc-no-recursion)
  give_way(child);
  while (!fits(top().kind, child)) {
    const Kind kind = missing(top().kind, child);
    make_room(kind);
    const std::string_view tag = kind == Kind::kTable  ? "table"
                                 : kind == Kind::kRow  ? "tr"
                                 : kind == Kind::kCell ? "td"
                                 : kind == Kind::kList ? "ul"
                                                       : "li";
    Block block = inside(kind, tag);
    block.gives_way = true;
    push(std::move(block), {});
  }
}

void MailHtml::end(const Element& element) {
  if (!is_block(element.role)) {
    return;
  }
  const auto [depth, number] = owned_.back();
  owned_.pop_back();
  if (depth == 0 || blocks_.size() < depth || blocks_[depth - 1].number != number) {
    end_line();
    return;
  }
  while (blocks_.size() > depth) {
    close_block();
  }
  if (top().kind == Kind::kItem) {
    tags_.close(out_);
    begin_line();
    top().kind = Kind::kEndedItem;
    top().gives_way = true;
  } else {
    close_block();
  }
}

void MailHtml::end_line() {
  break_pending_ = break_pending_ || line_has_content_;
  blank_pending_ = false;
}

void MailHtml::line_break(const Inherited& inherited) {
  if (!fits(top().kind, Kind::kText) && !top().gives_way) {
    return;  // between rows or items
  }
  blank_pending_ = false;
  begin_content();
  tags_.switch_to(out_, usable_look(inherited.look, top().look), inherited.preserved, top().look,
                  top().preserved);
  out_ += "<br>";
  line_has_content_ = false;
}

void MailHtml::picture(const Inherited& inherited, Attributes attributes) {
  const std::string source = allowed_source(value_of(attributes, "src"));
  const std::string alternative = one_line(value_of(attributes, "alt"));
  if (source.empty()) {
    words(alternative, inherited.look);
    return;
  }
  begin_inline(inherited.look, inherited.preserved);
  out_ += "<img";
  add_attribute(out_, "src", source);
  add_attribute(out_, "alt", alternative);
  add_number(out_, attributes, "width", 0, 10'000);
  add_number(out_, attributes, "height", 0, 10'000);
  out_ += '>';
}

void MailHtml::text(std::string_view text, const Inherited& inherited) {
  if (!inherited.preserved) {
    words(text, inherited.look);
    return;
  }
  if (!fits(top().kind, Kind::kText) && !top().gives_way && std::ranges::all_of(text, is_white)) {
    return;  // between rows or items
  }
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    without_controls(text.substr(0, end), [&](std::string_view piece) {
      begin_inline(inherited.look, true);
      add_escaped(out_, piece);
    });
    if (end < text.size()) {
      begin_inline(inherited.look, true);
      out_ += '\n';
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void MailHtml::words(std::string_view text, const Look& look) {
  bool begun = false;  // the last word was of this look
  while (!text.empty()) {
    const auto word = std::min(text.find_first_not_of(kWhite), text.size());
    if (word > 0 && line_has_content_ && !break_pending_ && !blank_pending_) {
      blank_pending_ = true;
      blank_look_ = look;
    }
    text.remove_prefix(word);
    const auto end = std::min(text.find_first_of(kWhite), text.size());
    without_controls(text.substr(0, end), [&](std::string_view piece) {
      if (!std::exchange(begun, true)) {
        begin_inline(look, false);
      } else if (std::exchange(blank_pending_, false)) {
        out_ += ' ';
      }
      add_escaped(out_, piece);
    });
    text.remove_prefix(end);
  }
}

void MailHtml::begin_inline(const Look& look, bool preserved) {
  begin_content();
  switch_to(look, preserved);
  line_has_content_ = true;
}

void MailHtml::begin_content() {
  make_room(Kind::kText);
  if (break_pending_) {
    tags_.close(out_);
    out_ += "<br>";
    begin_line();
  }
  if (std::exchange(blank_pending_, false)) {
    switch_to(blank_look_, false);
    out_ += ' ';
  }
}

void MailHtml::switch_to(const Look& look, bool preserved) {
  tags_.switch_to(out_, visible_look(usable_look(look, top().look)), preserved, top().look,
                  top().preserved);
}

std::string MailHtml::take(std::string_view last_line) {
  while (blocks_.size() > 1) {
    close_block();
  }
  tags_.close(out_);
  if (!last_line.empty()) {
    out_ += "<div>";
    add_escaped(out_, last_line);
    out_ += "</div>";
  }
  out_ += out_.ends_with('\n') ? "" : "\n";
  out_ += kClosing;
  return std::move(out_);
}

}  // namespace quoll::xml
