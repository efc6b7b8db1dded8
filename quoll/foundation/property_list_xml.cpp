#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/property_list.h"
#include "quoll/foundation/property_list_forms.h"
#include "quoll/foundation/property_list_xml_text.h"

namespace quoll::foundation::property_list {

namespace {

enum class Kind {
  kText,
  kKey,
  kInteger,
  kDictionary,
  kTrue,
  kFalse,
  kList,
  kDate,
  kReal,
  kBytes,
  kDocument,
};

struct Element {
  std::string_view name;
  Kind kind;
};

/// The frequent ones first.
constexpr std::array<Element, 11> kElements{{{"string", Kind::kText},
                                             {"key", Kind::kKey},
                                             {"integer", Kind::kInteger},
                                             {"dict", Kind::kDictionary},
                                             {"true", Kind::kTrue},
                                             {"false", Kind::kFalse},
                                             {"array", Kind::kList},
                                             {"date", Kind::kDate},
                                             {"real", Kind::kReal},
                                             {"data", Kind::kBytes},
                                             {"plist", Kind::kDocument}}};

struct Tag {
  Kind kind;
  bool closes = false;  ///< </name>
  bool empty = false;   ///< <name/>
};

/// What a scalar element with that content stands for; null when it stands for nothing.
Value scalar(Kind kind, std::string_view content) {
  switch (kind) {
    case Kind::kText:
      return content;
    case Kind::kTrue:
    case Kind::kFalse:
      return content.empty() ? Value(kind == Kind::kTrue) : Value();
    case Kind::kInteger:
      return integer_of_xml(content);
    case Kind::kReal:
      return real_of_xml(content);
    case Kind::kDate:
      return date_of_xml(content);
    case Kind::kBytes:
      return bytes_of_xml(content);
    default:
      return {};
  }
}

class XmlReader {
 public:
  XmlReader(std::string_view text, Failure& failure) : text_(text), failure_(failure) {}

  Value document() {
    if (!skip_between() || (take("<!DOCTYPE") && !(skip_to_tag_end() && skip_between()))) {
      return failure_.at(position_, "a comment does not end, or the document type says too much");
    }
    const auto opening = tag();
    if (!opening || opening->kind != Kind::kDocument || opening->closes || opening->empty) {
      return fail("<plist> was expected");
    }
    const auto first = next_tag();
    Value root = first ? element(*first, 1) : fail("a value was expected");
    if (root.is_null()) {
      return root;
    }
    if (!closes(Kind::kDocument)) {
      return fail("</plist> was expected");
    }
    const bool whole = skip_between() && position_ == text_.size();
    return whole ? root : failure_.at(position_, "something follows </plist>");
  }

 private:
  /// The place is the tag that was read last, or what stands where a tag was expected.
  Value fail(std::string_view reason) { return failure_.at(tag_begin_, reason); }

  [[nodiscard]] bool at(std::string_view wanted) const {
    return text_.substr(position_).starts_with(wanted);
  }

  bool take(std::string_view wanted) {
    const bool taken = at(wanted);
    position_ += taken ? wanted.size() : 0;
    return taken;
  }

  bool skip_past(std::string_view end) {
    const std::size_t found = text_.find(end, position_);
    position_ = found == std::string_view::npos ? text_.size() : found + end.size();
    return found != std::string_view::npos;
  }

  void skip_blanks() {
    while (position_ < text_.size() && is_blank(text_[position_])) {
      ++position_;
    }
  }

  /// White space, comments and processing instructions.
  bool skip_between() {
    while (true) {
      skip_blanks();
      if (take("<!--")) {
        if (!skip_past("-->")) {
          return false;
        }
      } else if (take("<?")) {
        if (!skip_past("?>")) {
          return false;
        }
      } else {
        return true;
      }
    }
  }

  /// Past the ">" that ends a tag or a document type; one inside quotes does not. A "[" would begin
  /// declarations, of entities among others.
  bool skip_to_tag_end() {
    while (true) {
      position_ = std::min(text_.find_first_of("\"'[<>", position_), text_.size());
      if (take(">")) {
        return true;
      }
      if (!(take("\"") && skip_past("\"")) && !(take("'") && skip_past("'"))) {
        return false;
      }
    }
  }

  std::optional<Kind> kind() {
    const std::size_t begin = position_;
    while (position_ < text_.size() && text_[position_] >= 'a' && text_[position_] <= 'z') {
      ++position_;
    }
    const std::string_view name = text_.substr(begin, position_ - begin);
    for (const Element& element : kElements) {
      if (element.name == name) {
        return element.kind;
      }
    }
    return std::nullopt;
  }

  std::optional<Tag> tag() {
    tag_begin_ = position_;
    if (!take("<")) {
      return std::nullopt;
    }
    const bool closes = take("/");
    const auto named = kind();
    if (!named) {
      return std::nullopt;
    }
    if (take(">")) {
      return Tag{*named, closes};
    }
    if (closes) {
      skip_blanks();
      return take(">") ? std::optional(Tag{*named, closes}) : std::nullopt;
    }
    const bool ends_the_name = position_ < text_.size() && (at("/") || is_blank(text_[position_]));
    if (!ends_the_name || !skip_to_tag_end()) {
      return std::nullopt;
    }
    return Tag{*named, closes, text_[position_ - 2] == '/'};
  }

  std::optional<Tag> next_tag() { return skip_between() ? tag() : std::nullopt; }

  bool closes(Kind kind) {
    const auto closing = next_tag();
    return closing && closing->closes && closing->kind == kind;
  }

  Value element(const Tag& tag, std::size_t depth) {
    if (tag.closes || tag.kind == Kind::kKey || tag.kind == Kind::kDocument) {
      return fail("a value was expected");
    }
    if (depth > kPropertyListDepth || ++values_ > kPropertyListValues) {
      return fail("it has too many values, or too deep ones");
    }
    if (tag.kind == Kind::kDictionary) {
      return dictionary(tag, depth);
    }
    if (tag.kind == Kind::kList) {
      return list(tag, depth);
    }
    const std::size_t begin = tag_begin_;
    const auto text = content(tag);
    Value value = text ? scalar(tag.kind, *text) : fail(kBrokenText);
    return value.is_null() ? failure_.at(begin, "this is not what its tag says") : value;
  }

  Value list(const Tag& opening, std::size_t depth) {
    std::vector<Value> elements;
    while (!opening.empty) {
      const auto next = next_tag();
      if (!next || (next->closes && next->kind != Kind::kList)) {
        return fail("a value or </array> was expected");
      }
      if (next->closes) {
        break;
      }
      Value value = element(*next, depth + 1);
      if (value.is_null()) {
        return {};
      }
      elements.push_back(std::move(value));
    }
    return List(std::move(elements));
  }

  Value dictionary(const Tag& opening, std::size_t depth) {
    Dictionary entries;
    std::string key;
    while (!opening.empty) {
      const auto next = next_tag();
      if (!next || next->kind != (next->closes ? Kind::kDictionary : Kind::kKey)) {
        return fail("<key> or </dict> was expected");
      }
      if (next->closes) {
        break;
      }
      const auto text = content(*next);
      if (!text) {
        return fail(kBrokenText);
      }
      key = *text;  // reading the value may overwrite where it stands
      const auto tag = next_tag();
      Value value = tag ? element(*tag, depth + 1) : fail("a value was expected");
      if (value.is_null()) {
        return {};
      }
      entries.setObject(std::move(value), key);
    }
    return entries;
  }

  /// The text up to the tag that closes the element just opened, and past that tag. It lives until
  /// the next call.
  std::optional<std::string_view> content(const Tag& opening) {
    if (opening.empty) {
      return std::string_view();
    }
    joined_.clear();
    while (true) {
      const std::size_t begin = position_;
      position_ = std::min(text_.find('<', begin), text_.size());
      const std::string_view piece = text_.substr(begin, position_ - begin);
      if (at("</")) {
        const bool plain = joined_.empty() && piece.find('&') == std::string_view::npos;
        if (!closes(opening.kind) || !(plain || append_unescaped(joined_, piece))) {
          return std::nullopt;
        }
        return plain ? piece : std::string_view(joined_);
      }
      if (!append_unescaped(joined_, piece) || !markup_in_text()) {
        return std::nullopt;
      }
    }
  }

  /// A comment, or text in which nothing has a meaning.
  bool markup_in_text() {
    constexpr std::string_view kEnd = "]]>";
    if (take("<!--")) {
      return skip_past("-->");
    }
    const std::size_t begin = position_ + std::string_view("<![CDATA[").size();
    if (!take("<![CDATA[") || !skip_past(kEnd)) {
      return false;
    }
    joined_ += text_.substr(begin, position_ - kEnd.size() - begin);
    return true;
  }

  static constexpr std::string_view kBrokenText =
      "a text does not end here, or holds an entity or a tag that it cannot hold";

  std::string_view text_;
  Failure& failure_;
  std::size_t position_ = 0;
  std::size_t tag_begin_ = 0;
  std::size_t values_ = 0;
  std::string joined_;
};

}  // namespace

Value read_xml(std::string_view text, Failure& failure) {
  return XmlReader(text, failure).document();
}

}  // namespace quoll::foundation::property_list
