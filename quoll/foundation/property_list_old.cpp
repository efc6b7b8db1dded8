#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/property_list.h"
#include "quoll/foundation/property_list_forms.h"
#include "quoll/foundation/text.h"
#include "quoll/foundation/unicode.h"

namespace quoll::foundation::property_list {

namespace {

/// What may stand in a text without quotes.
bool is_plain(char c) {
  return is_ascii_letter(c) || is_ascii_digit(c) ||
         (c != '\0' && std::strchr("_$/:.-", c) != nullptr);
}

char control_character(char letter) {
  switch (letter) {
    case 'a':
      return '\a';
    case 'b':
      return '\b';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'v':
      return '\v';
    default:
      return letter;  // quotes, backslashes and line breaks stand for themselves
  }
}

class OldReader {
 public:
  OldReader(std::string_view text, Failure& failure) : text_(text), failure_(failure) {}

  Value document() {
    Value root = value(1);
    if (root.is_null()) {
      return root;
    }
    const bool whole = skip_between() && position_ == text_.size();
    return whole ? root : fail("something follows the first value");
  }

 private:
  Value fail(std::string_view reason) { return failure_.at(position_, reason); }

  /// The next character; a zero byte at the end.
  [[nodiscard]] char next() const { return position_ < text_.size() ? text_[position_] : '\0'; }

  bool take(std::string_view wanted) {
    const bool taken = text_.substr(position_).starts_with(wanted);
    position_ += taken ? wanted.size() : 0;
    return taken;
  }

  /// White space and comments; false when a comment does not end.
  bool skip_between() {
    while (position_ < text_.size()) {
      if (is_blank(next())) {
        ++position_;
      } else if (take("//")) {
        position_ = std::min(text_.find_first_of("\r\n", position_), text_.size());
      } else if (text_.substr(position_).starts_with("/*")) {
        const std::size_t end = text_.find("*/", position_ + 2);
        if (end == std::string_view::npos) {
          fail("a comment does not end");
          return false;  // the position stays at the comment, so that the next call fails too
        }
        position_ = end + 2;
      } else {
        break;
      }
    }
    return true;
  }

  /// The same, and the mark after it.
  bool take_mark(std::string_view mark) { return skip_between() && take(mark); }

  Value value(std::size_t depth) {
    if (depth > kPropertyListDepth || ++values_ > kPropertyListValues || !skip_between()) {
      return fail("it has too many values, or too deep ones");
    }
    if (take("{")) {
      return dictionary(depth);
    }
    if (take("(")) {
      return list(depth);
    }
    if (take("<")) {
      return bytes();
    }
    auto scalar = text();
    return scalar ? Value(std::move(*scalar)) : fail("a value was expected");
  }

  Value list(std::size_t depth) {
    std::vector<Value> elements;
    while (!take_mark(")")) {
      Value element = value(depth + 1);
      if (element.is_null()) {
        return {};
      }
      elements.push_back(std::move(element));
      if (!take_mark(",")) {
        if (!take_mark(")")) {
          return fail("\",\" or \")\" was expected");
        }
        break;
      }
    }
    return List(std::move(elements));
  }

  Value dictionary(std::size_t depth) {
    Dictionary entries;
    while (!take_mark("}")) {
      const auto key = text();
      Value entry = key && take_mark("=") ? value(depth + 1)
                                          : fail("a key and \"=\", or \"}\", was expected");
      if (entry.is_null() || !take_mark(";")) {
        return fail("\";\" was expected");
      }
      entries.setObject(std::move(entry), *key);
    }
    return entries;
  }

  /// Hexadecimal digits in pairs, white space anywhere.
  Value bytes() {
    Bytes bytes;
    int high = -1;
    for (; position_ < text_.size(); ++position_) {
      const int digit = digit_value(next(), 16);
      if (digit >= 0 && high >= 0) {
        bytes.push_back(static_cast<unsigned char>(high * 16 + digit));
        high = -1;
      } else if (digit >= 0) {
        high = digit;
      } else if (!is_blank(next())) {
        break;
      }
    }
    return high < 0 && take(">") ? Value(std::move(bytes))
                                 : fail("bytes are pairs of digits and end with \">\"");
  }

  std::optional<std::string> text() {
    if (!skip_between()) {
      return std::nullopt;
    }
    if (next() == '"' || next() == '\'') {
      return quoted(text_[position_++]);
    }
    const std::size_t begin = position_;
    while (is_plain(next())) {
      ++position_;
    }
    if (position_ == begin) {
      return std::nullopt;
    }
    return std::string(text_.substr(begin, position_ - begin));
  }

  std::optional<std::string> quoted(char quote) {
    const char stops[] = {quote, '\\'};
    std::string out;
    while (true) {
      const std::size_t stop = text_.find_first_of(std::string_view(stops, 2), position_);
      if (stop == std::string_view::npos) {
        fail("a quoted text does not end");
        return std::nullopt;
      }
      out += text_.substr(position_, stop - position_);
      position_ = stop + 1;
      if (text_[stop] == quote) {
        return out;
      }
      if (!append_escaped(out)) {
        fail("an escape stands for no character");
        return std::nullopt;
      }
    }
  }

  /// What follows a backslash.
  bool append_escaped(std::string& out) {
    if (position_ == text_.size()) {
      return false;
    }
    if (digit_value(next(), 8) >= 0) {
      constexpr int kMostDigits = 3;
      return append_character(out, *number(8, kMostDigits));
    }
    if (take("U")) {
      return append_unit(out);
    }
    out += control_character(next());
    ++position_;
    return true;
  }

  /// A unit of UTF-16; those of a surrogate pair follow one another, each escaped.
  bool append_unit(std::string& out) {
    auto character = utf16_unit();
    if (character && is_high_surrogate(*character)) {
      const auto low = take("\\U") ? utf16_unit() : std::nullopt;
      if (!low || !is_low_surrogate(*low)) {
        return false;
      }
      character = character_of_pair(*character, *low);
    }
    return character && append_character(out, *character);
  }

  std::optional<char32_t> utf16_unit() {
    constexpr int kMostDigits = 4;
    return number(16, kMostDigits);
  }

  /// The number that the next digits are; none when there is no digit.
  std::optional<char32_t> number(int base, int most_digits) {
    std::optional<char32_t> number;
    for (int digits = 0; digits < most_digits && digit_value(next(), base) >= 0; ++digits) {
      number = number.value_or(0) * static_cast<char32_t>(base) +
               static_cast<char32_t>(digit_value(next(), base));
      ++position_;
    }
    return number;
  }

  std::string_view text_;
  Failure& failure_;
  std::size_t position_ = 0;
  std::size_t values_ = 0;
};

}  // namespace

Value read_old(std::string_view text, Failure& failure) {
  return OldReader(text, failure).document();
}

}  // namespace quoll::foundation::property_list
