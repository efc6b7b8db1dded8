#include "quoll/foundation/url_parts.h"

#include <algorithm>
#include <array>

#include "quoll/foundation/text.h"

namespace quoll::foundation {

namespace {

constexpr std::array<bool, 256> make_allowed() {
  std::array<bool, 256> allowed{};
  constexpr std::string_view kCharacters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
      "-_.!~*'();/?:@&=+$,[]";
  for (const char c : kCharacters) {
    allowed[static_cast<unsigned char>(c)] = true;
  }
  return allowed;
}

constexpr std::array<bool, 256> kAllowed = make_allowed();

bool is_in_scheme(char c) {
  return is_ascii_letter(c) || is_ascii_digit(c) || c == '+' || c == '-' || c == '.';
}

/// Cuts `text` before the first `mark` and answers what follows it; none when it is not there.
UrlPiece cut_after(std::string_view& text, char mark) {
  const std::size_t position = text.find(mark);
  if (position == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view rest = text.substr(position + 1);
  text = text.substr(0, position);
  return rest;
}

UrlPiece take_scheme(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), is_in_scheme);
  if (end == text.end() || *end != ':' || !is_ascii_letter(text.front())) {
    return std::nullopt;
  }
  const std::string_view scheme = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(scheme.size() + 1);
  return scheme;
}

void split_authority(std::string_view authority, UrlParts& out) {
  const std::size_t at = authority.rfind('@');
  if (at != std::string_view::npos) {
    std::string_view user = authority.substr(0, at);
    out.password = cut_after(user, ':');
    out.user = user;
    authority.remove_prefix(at + 1);
  }
  std::string_view host = authority;
  const std::size_t bracket = authority.starts_with('[') ? authority.find(']') : std::string::npos;
  if (bracket != std::string_view::npos) {
    host = authority.substr(1, bracket - 1);
    authority.remove_prefix(bracket + 1);
    out.port = cut_after(authority, ':');
  } else {
    out.port = cut_after(host, ':');
  }
  if (!host.empty()) {
    out.host = host;
  }
}

}  // namespace

bool is_url_character(char c) {
  return kAllowed[static_cast<unsigned char>(c)];
}

UrlReference split_reference(std::string_view text) {
  UrlReference out;
  out.scheme = take_scheme(text);
  out.fragment = cut_after(text, '#');
  out.query = cut_after(text, '?');
  if (text.starts_with("//")) {
    const std::size_t slash = std::min(text.find('/', 2), text.size());
    out.authority = text.substr(2, slash - 2);
    text.remove_prefix(slash);
  }
  out.path = text;
  return out;
}

UrlParts split_parts(std::string_view text) {
  const UrlReference reference = split_reference(text);
  UrlParts out;
  out.scheme = reference.scheme;
  std::string_view path = reference.path;
  if (out.scheme && !reference.authority && !path.starts_with('/')) {
    return out;
  }
  out.query = reference.query;
  out.fragment = reference.fragment;
  if (reference.authority) {
    split_authority(*reference.authority, out);
  }
  const std::size_t segment = path.rfind('/') + 1;  // 0 when there is no "/"
  const std::size_t semicolon = path.find(';', segment);
  if (semicolon != std::string_view::npos) {
    out.parameters = path.substr(semicolon + 1);
    path = path.substr(0, semicolon);
  }
  if (!path.empty()) {
    out.path = path;
  }
  return out;
}

}  // namespace quoll::foundation
