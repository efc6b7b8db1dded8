#include "quoll/linux/xml/mail_document.h"

#include "quoll/linux/xml/allowed_link.h"
#include "quoll/linux/xml/css.h"
#include "quoll/linux/xml/markup.h"

namespace quoll::xml {
namespace {

/// The length of a body in bytes. A command carries half of it.
constexpr std::size_t kLongestBody = std::size_t{128} << 20U;
constexpr std::string_view kRestLeftOut = "[The rest was left out: the text is too long.]";
/// The text of a link is kept so far, to be compared with the address.
constexpr std::size_t kLongestShown = 10'000;

/// True when there is not even white space to show.
bool is_nothing(std::string_view text) {
  bool nothing = text.find_first_of(kWhite) == std::string_view::npos;
  if (nothing) {
    without_controls(text, [&nothing](std::string_view /*piece*/) { nothing = false; });
  }
  return nothing;
}

}  // namespace

void MailDocument::begin(const Element& element, const Inherited& inherited,
                         Attributes attributes) {
  if (element.role == Role::kAnchor) {
    begin_anchor(inherited.look.link);
  } else if (element.role == Role::kImage) {
    const std::string_view alternative = value_of(attributes, "alt");
    if (is_nothing(alternative) && allowed_source(value_of(attributes, "src")).empty()) {
      return;
    }
    add_to_link(alternative, inherited.look.link);
  } else if (after_anchor_ && element.role != Role::kInline) {
    end_link();
  }
  html_.begin(element, inherited, attributes);
  text_.begin(element, inherited, attributes);
}

void MailDocument::end(const Element& element) {
  if (element.role == Role::kAnchor) {
    after_anchor_ = shows_text();
  } else if (after_anchor_ && is_block(element.role)) {
    end_link();
  }
  html_.end(element);
  text_.end(element);
}

void MailDocument::text(std::string_view text, const Inherited& inherited) {
  if (!is_nothing(text)) {
    add_to_link(text, inherited.look.link);
    html_.text(text, inherited);
    text_.text(text, inherited);
  }
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

/// One link may be several anchors, of different looks. Two anchors of one link are two links when
/// the first shows its whole address.
void MailDocument::begin_anchor(const SharedText& link) {
  if (after_anchor_ && link == link_ && shows_address()) {
    end_line();
  }
  after_anchor_ = false;
}

void MailDocument::add_to_link(std::string_view text, const SharedText& link) {
  if (!(link == link_)) {
    if (shows_text() && !link.view().empty()) {
      end_line();
    } else {
      end_link();
    }
    link_ = link;
  }
  after_anchor_ = false;
  if (!link_.view().empty() && shown_.size() < kLongestShown) {
    shown_ += text.substr(0, kLongestShown);
  }
}

/// What follows begins a line of its own in both bodies.
void MailDocument::end_line() {
  end_link();
  html_.end_line();
  text_.end_line();
}

void MailDocument::end_link() {
  if (shows_text() && !shows_address()) {
    text_.add_word("<" + std::string(link_.view()) + ">");
  }
  link_ = {};
  shown_.clear();
  after_anchor_ = false;
}

bool MailDocument::shows_text() const {
  return !trim_ascii(shown_).empty();
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
