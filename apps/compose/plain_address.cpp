#include "apps/compose/plain_address.h"

#include <cstddef>

#include "apps/compose/clean_text.h"
#include "apps/compose/mail_header.h"

namespace quoll::compose {
namespace {

/// In quotes that end where the text ends.
bool is_quoted(std::string_view text) {
  std::size_t at = 1;
  while (at < text.size() && text[at] != '"') {
    at += text[at] == '\\' ? 2 : 1;
  }
  return text.size() > 2 && text.front() == '"' && at + 1 == text.size();
}

/// The number of a host.
bool is_literal(std::string_view text) {
  constexpr std::string_view kAllowed = "0123456789ABCDEFabcdefIPv6.:";
  return text.size() > 2 && text.front() == '[' &&
         text.find_first_not_of(kAllowed, 1) == text.size() - 1 && text.back() == ']';
}

bool is_bare_name(std::string_view text) {
  return !text.empty() && is_bare(text) && text.front() != ' ' && text.back() != ' ';
}

bool is_domain(std::string_view text) {
  return (is_words(text) && text.front() != '.' && text.back() != '.' &&
          text.find("..") == std::string_view::npos) ||
         is_literal(text);
}

}  // namespace

bool is_words(std::string_view text) {
  return !text.empty() && text.find_first_of("()<>[]:;@\\,\" ") == std::string_view::npos;
}

bool is_address(std::string_view text) {
  constexpr std::size_t kLongest = 320;
  const std::size_t at = text.rfind('@');
  return text.size() <= kLongest && at != std::string_view::npos &&
         is_domain(text.substr(at + 1)) &&
         (is_words(text.substr(0, at)) ||
          (is_quoted(text.substr(0, at)) && text.find('\\') == std::string_view::npos)) &&
         is_clean(text) && !has_invisible(text);
}

bool is_plain_address(std::string_view text) {
  std::string_view address = text;
  if (const auto begin = text.rfind(" <"); text.ends_with('>') && begin != std::string_view::npos) {
    const std::string_view name = text.substr(0, begin);
    if (!(is_bare_name(name) || is_quoted(name)) || !is_clean(name) || has_invisible(name)) {
      return false;
    }
    address = text.substr(begin + 2, text.size() - begin - 3);
  }
  return is_address(address) && address.front() != '-' && address.front() != '"' &&
         text.find("=?") == std::string_view::npos;
}

}  // namespace quoll::compose
