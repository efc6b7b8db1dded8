#include "quoll/linux/xml/mail_document.h"

#include <array>

#include "quoll/linux/xml/css.h"

namespace quoll::xml {
namespace {

/// The length of a body in bytes. A command carries half of it.
constexpr std::size_t kLongestBody = std::size_t{128} << 20U;
constexpr std::string_view kRestLeftOut = "[The rest was left out: the text is too long.]";
constexpr std::size_t kLongestShown = 10'000;

}  // namespace

void MailDocument::begin(const Element& element, const Inherited& inherited,
                         Attributes attributes) {
  if (element.role == Role::kAnchor) {
    begin_anchor(inherited.look.link);
  } else if (element.role == Role::kImage) {
    add_to_link(value_of(attributes, "alt"), inherited.look.link);
  } else if (after_anchor_ && element.role != Role::kInline) {
    end_link();
  }
  html_.begin(element, inherited, attributes);
  text_.begin(element, inherited, attributes);
}

void MailDocument::end(const Element& element) {
  if (element.role == Role::kAnchor) {
    after_anchor_ = !trim_ascii(shown_).empty();
  } else if (after_anchor_ && is_block(element.role)) {
    end_link();
  }
  html_.end(element);
  text_.end(element);
}

void MailDocument::text(std::string_view text, const Inherited& inherited) {
  add_to_link(text, inherited.look.link);
  html_.text(text, inherited);
  text_.text(text, inherited);
}

bool MailDocument::is_full() const {
  return html_.size() > kLongestBody || text_.size() > kLongestBody;
}

MailBodies MailDocument::take(bool whole) {
  end_link();
  if (!whole) {
    text_.add_paragraph(kRestLeftOut);
  }
  return {.html = html_.take(whole ? std::string_view() : kRestLeftOut), .text = text_.take_text()};
}

/// One link may be several anchors, of different looks. Links that are shared one after the other
/// show their addresses.
void MailDocument::begin_anchor(const SharedText& link) {
  const bool is_next = after_anchor_ && !link.view().empty();
  if (is_next && (!(link == link_) || shows_address())) {
    end_link();
    html_.end_line();
    text_.break_line();
  } else if (!(link == link_)) {
    end_link();
  }
  after_anchor_ = false;
}

void MailDocument::add_to_link(std::string_view text, const SharedText& link) {
  if (!(link == link_)) {
    end_link();
    link_ = link;
  }
  after_anchor_ = false;
  if (!link_.view().empty() && shown_.size() < kLongestShown) {
    shown_ += text.substr(0, kLongestShown);
  }
}

void MailDocument::end_link() {
  if (!trim_ascii(shown_).empty() && !shows_address()) {
    text_.add_word("<" + std::string(link_.view()) + ">");
  }
  link_ = {};
  shown_.clear();
  after_anchor_ = false;
}

bool MailDocument::shows_address() const {
  const std::string_view shown = trim_ascii(shown_);
  const std::string_view address = link_.view();
  if (!address.ends_with(shown)) {
    return false;
  }
  const std::string_view before = address.substr(0, address.size() - shown.size());
  return before.empty() || before == "mailto:" || before == "tel:";
}

}  // namespace quoll::xml
