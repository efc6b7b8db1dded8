#include "apps/compose/plain_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <utility>

#include "quoll/foundation/text.h"
#include "quoll/foundation/unicode.h"

namespace quoll::compose {
namespace {

constexpr std::string_view kWhite = " \t\n\r\f";

constexpr std::array<std::string_view, 4> kUnseen{"script", "style", "template", "title"};
constexpr std::array<std::string_view, 23> kBlocks{
    "address", "article", "blockquote", "body", "div",     "dl", "dt", "dd",
    "footer",  "h1",      "h2",         "h3",   "h4",      "h5", "h6", "header",
    "html",    "li",      "ol",         "pre",  "section", "tr", "ul"};

constexpr std::array<std::pair<std::string_view, std::string_view>, 12> kEntities{
    {{"amp", "&"},
     {"lt", "<"},
     {"gt", ">"},
     {"quot", "\""},
     {"apos", "'"},
     {"nbsp", "\u00a0"},
     {"hellip", "\u2026"},
     {"ndash", "\u2013"},
     {"mdash", "\u2014"},
     {"bull", "\u2022"},
     {"copy", "\u00a9"},
     {"euro", "\u20ac"}}};

bool is_white(char c) {
  return kWhite.find(c) != std::string_view::npos;
}

template <typename Names>
bool is_one_of(const Names& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

std::string utf8(std::uint32_t code) {
  std::string text;
  return code != 0 && foundation::append_character(text, code) ? text : "\uFFFD";
}

/// The character for `&name;` or `&#number;`; empty when it is unknown.
std::string entity(std::string_view name) {
  if (name.starts_with('#')) {
    name.remove_prefix(1);
    const bool hexadecimal = name.starts_with('x') || name.starts_with('X');
    name.remove_prefix(hexadecimal ? 1 : 0);
    std::uint32_t code = 0;
    const auto [end, error] =
        std::from_chars(name.data(), name.data() + name.size(), code, hexadecimal ? 16 : 10);
    return error == std::errc() && end == name.data() + name.size() ? utf8(code) : std::string();
  }
  const auto* found = std::ranges::find(kEntities, name, &decltype(kEntities)::value_type::first);
  return found != kEntities.end() ? std::string(found->second) : std::string();
}

std::string decoded(std::string_view text) {
  constexpr std::size_t kLongestEntity = 12;
  std::string out;
  while (!text.empty()) {
    const auto ampersand = text.find('&');
    out += text.substr(0, ampersand);
    if (ampersand == std::string_view::npos) {
      break;
    }
    text.remove_prefix(ampersand + 1);
    const auto semicolon = text.substr(0, kLongestEntity).find(';');
    const std::string stands_for =
        semicolon == std::string_view::npos ? "" : entity(text.substr(0, semicolon));
    if (stands_for.empty()) {
      out += '&';
    } else {
      out += stands_for;
      text.remove_prefix(semicolon + 1);
    }
  }
  return out;
}

/// The text, with white space as a person sees it.
class Page {
 public:
  void add(std::string_view text, bool preformatted) {
    for (const char c : text) {
      if (preformatted && c == '\n') {
        break_line();
      } else if (!preformatted && is_white(c)) {
        blank_ = true;
      } else {
        put(c);
      }
    }
  }
  /// The next text will begin a new line.
  void end_line() { new_line_ = !out_.empty() && out_.back() != '\n'; }
  void break_line() {
    end_of_line();
    out_ += '\n';
  }
  /// At most one empty line is written between paragraphs.
  void end_paragraph() {
    end_line();
    new_paragraph_ = !out_.empty();
  }
  [[nodiscard]] std::size_t size() const { return out_.size(); }
  [[nodiscard]] std::string_view since(std::size_t position) const {
    return std::string_view(out_).substr(std::min(position, out_.size()));
  }
  [[nodiscard]] std::string take() {
    const auto end = out_.find_last_not_of(kWhite);
    out_.erase(end == std::string::npos ? 0 : end + 1);
    if (!out_.empty()) {
      out_ += '\n';
    }
    return std::move(out_);
  }

 private:
  void end_of_line() {
    if (new_line_) {
      out_ += '\n';
    }
    if (new_paragraph_ && !out_.ends_with("\n\n")) {
      out_ += '\n';
    }
    new_line_ = new_paragraph_ = blank_ = false;
  }
  void put(char c) {
    const bool blank = blank_ && !new_line_ && !new_paragraph_ && !out_.empty() &&
                       out_.back() != '\n' && out_.back() != ' ';
    end_of_line();
    if (blank) {
      out_ += ' ';
    }
    out_ += c;
  }

  std::string out_;
  bool blank_ = false;
  bool new_line_ = false;
  bool new_paragraph_ = false;
};

struct Tag {
  std::string name;  ///< in lower case
  bool closing = false;
  std::string_view attributes;
};

Tag tag_of(std::string_view inside) {
  Tag tag;
  tag.closing = inside.starts_with('/');
  inside.remove_prefix(tag.closing ? 1 : 0);
  const auto end = std::min(inside.find_first_of(" \t\n\r\f/"), inside.size());
  tag.name = foundation::ascii_lower_case(inside.substr(0, end));
  tag.attributes = inside.substr(end);
  return tag;
}

std::string_view taken_until(std::string_view& text, std::string_view any_of) {
  const auto end = std::min(text.find_first_of(any_of), text.size());
  const auto before = text.substr(0, end);
  text.remove_prefix(end);
  return before;
}

void skip_white(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kWhite), text.size()));
}

/// The value of the `href` attribute; empty when there is none.
std::string address_in(std::string_view attributes) {
  while (!attributes.empty()) {
    attributes.remove_prefix(
        std::min(attributes.find_first_not_of(" \t\n\r\f/"), attributes.size()));
    const auto name = taken_until(attributes, "= \t\n\r\f/");
    skip_white(attributes);
    if (!attributes.starts_with('=')) {
      continue;
    }
    attributes.remove_prefix(1);
    skip_white(attributes);
    const bool quoted = attributes.starts_with('"') || attributes.starts_with('\'');
    const std::string end = quoted ? std::string(1, attributes.front()) : std::string(kWhite);
    attributes.remove_prefix(quoted ? 1 : 0);
    const auto value = taken_until(attributes, end);
    attributes.remove_prefix(quoted && !attributes.empty() ? 1 : 0);
    if (foundation::ascii_lower_case(name) == "href") {
      return decoded(value);
    }
  }
  return {};
}

/// The end of a tag: the ">" outside of quoted values, or the end of the text when there is none.
std::size_t end_of_tag(std::string_view html, std::size_t from) {
  char quote = '\0';
  for (auto at = from; at < html.size(); ++at) {
    const char c = html[at];
    if (quote != '\0') {
      quote = c == quote ? '\0' : quote;
    } else if (c == '>') {
      return at;
    } else if ((c == '"' || c == '\'') && at > from &&
               (html[at - 1] == '=' || is_white(html[at - 1]))) {
      quote = c;
    }
  }
  return html.size();
}

class Reader {
 public:
  explicit Reader(std::string_view html) : html_(html) {}

  std::string read() {
    while (at_ < html_.size()) {
      const auto opening = std::min(html_.find('<', at_), html_.size());
      if (unseen_.empty()) {
        page_.add(decoded(html_.substr(at_, opening - at_)), preformatted_);
      }
      at_ = opening;
      if (at_ < html_.size()) {
        read_markup();
      }
    }
    return page_.take();
  }

 private:
  void read_markup() {
    const auto rest = html_.substr(at_);
    if (rest.starts_with("<!--")) {
      const auto end = html_.find("-->", at_ + 4);
      at_ = end == std::string_view::npos ? html_.size() : end + 3;
    } else if (rest.size() > 1 && (std::isalpha(static_cast<unsigned char>(rest[1])) != 0 ||
                                   rest[1] == '/' || rest[1] == '!' || rest[1] == '?')) {
      const auto end = end_of_tag(html_, at_ + 1);
      const auto inside = html_.substr(at_ + 1, end - at_ - 1);
      at_ = std::min(end + 1, html_.size());
      apply(tag_of(inside));
    } else {
      if (unseen_.empty()) {
        page_.add("<", preformatted_);
      }
      ++at_;
    }
  }

  void apply(const Tag& tag) {
    if (!unseen_.empty()) {
      if (tag.closing && tag.name == unseen_) {
        unseen_.clear();
      }
    } else if (is_one_of(kUnseen, tag.name)) {
      unseen_ = tag.closing ? "" : tag.name;
    } else if (tag.name == "br") {
      page_.break_line();
    } else if (tag.name == "p") {
      page_.end_paragraph();
    } else if (tag.name == "a") {
      apply_link(tag);
    } else if (is_one_of(kBlocks, tag.name)) {
      page_.end_line();
      preformatted_ = tag.name == "pre" ? !tag.closing : preformatted_;
      if (tag.name == "li" && !tag.closing) {
        page_.add("- ", false);
      }
    }
  }

  void apply_link(const Tag& tag) {
    if (!link_.empty()) {
      if (foundation::trim(page_.since(link_text_)) != link_) {
        page_.add(" <" + link_ + ">", false);
      }
      link_.clear();
    }
    if (!tag.closing) {
      link_ = address_in(tag.attributes);
      link_text_ = page_.size();
    }
  }

  std::string_view html_;
  std::size_t at_ = 0;
  Page page_;
  std::string unseen_;  ///< the open element whose text is not shown; empty when there is none
  bool preformatted_ = false;
  std::string link_;  ///< the address of the open link
  std::size_t link_text_ = 0;
};

}  // namespace

std::string plain_text_of_html(std::string_view html) {
  return Reader(html).read();
}

}  // namespace quoll::compose
