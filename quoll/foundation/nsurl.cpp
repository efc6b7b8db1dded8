#include "quoll/foundation/nsurl.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "quoll/foundation/number_text.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/percent.h"

namespace quoll::foundation {

namespace {

using Piece = std::optional<std::string_view>;

/// The components as they stand in the text, not decoded.
struct Components {
  Piece scheme, user, password, host, port, path, parameters, query, fragment;
};

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

bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
bool is_hex_digit(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool is_escape_at(std::string_view text, std::size_t position) {
  return position + 2 < text.size() && is_hex_digit(text[position + 1]) &&
         is_hex_digit(text[position + 2]);
}

bool is_url_text(std::string_view text) {
  bool fragment_seen = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kAllowed[static_cast<unsigned char>(text[i])]) {
      continue;
    }
    if (text[i] == '%' && is_escape_at(text, i)) {
      i += 2;
    } else if (text[i] == '#' && !fragment_seen) {
      fragment_seen = true;
    } else {
      return false;
    }
  }
  return !text.empty();
}

/// Cuts `text` before the first `mark` and answers what follows it; none when it is not there.
Piece cut_after(std::string_view& text, char mark) {
  const std::size_t position = text.find(mark);
  if (position == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view rest = text.substr(position + 1);
  text = text.substr(0, position);
  return rest;
}

Piece take_scheme(std::string_view& text) {
  const auto in_scheme = [](char c) {
    return is_letter(c) || is_digit(c) || c == '+' || c == '-' || c == '.';
  };
  const auto end = std::find_if_not(text.begin(), text.end(), in_scheme);
  if (end == text.end() || *end != ':' || !is_letter(text.front())) {
    return std::nullopt;
  }
  const std::string_view scheme = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(scheme.size() + 1);
  return scheme;
}

void split_authority(std::string_view authority, Components& out) {
  const std::size_t at = authority.rfind('@');
  if (at != std::string_view::npos) {
    std::string_view user = authority.substr(0, at);
    out.password = cut_after(user, ':');
    out.user = user;
    authority.remove_prefix(at + 1);
  }
  const std::size_t bracket = authority.starts_with('[') ? authority.find(']') : std::string::npos;
  if (bracket != std::string_view::npos) {
    out.host = authority.substr(1, bracket - 1);
    authority.remove_prefix(bracket + 1);
    out.port = cut_after(authority, ':');
    return;
  }
  out.port = cut_after(authority, ':');
  if (!authority.empty()) {
    out.host = authority;
  }
}

Components split(std::string_view text) {
  Components out;
  std::string_view rest = text;
  out.scheme = take_scheme(rest);
  if (out.scheme && !rest.starts_with('/')) {
    return out;
  }
  out.fragment = cut_after(rest, '#');
  out.query = cut_after(rest, '?');
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    const std::size_t slash = std::min(rest.find('/'), rest.size());
    split_authority(rest.substr(0, slash), out);
    rest.remove_prefix(slash);
  }
  const std::size_t segment = rest.rfind('/') + 1;  // 0 when there is no "/"
  const std::size_t semicolon = rest.find(';', segment);
  if (semicolon != std::string_view::npos) {
    out.parameters = rest.substr(semicolon + 1);
    rest = rest.substr(0, semicolon);
  }
  if (!rest.empty()) {
    out.path = rest;
  }
  return out;
}

std::optional<std::string> as_written(Piece piece) {
  return piece ? std::optional<std::string>(*piece) : std::nullopt;
}

std::optional<std::string> decoded(Piece piece) {
  return piece ? percent_decode(*piece) : std::nullopt;
}

Piece without_trailing_slashes(Piece path) {
  while (path && path->size() > 1 && path->back() == '/') {
    path->remove_suffix(1);
  }
  return path;
}

}  // namespace

std::shared_ptr<NSURL> NSURL::URLWithString(std::string_view text) {
  return is_url_text(text) ? std::shared_ptr<NSURL>(new NSURL(std::string(text))) : nullptr;
}

std::shared_ptr<NSURL> NSURL::file_url(std::string_view absolute_path, bool is_folder) {
  if (absolute_path.empty()) {
    return nullptr;
  }
  std::string text = "file://" + percent_encode_path(absolute_path);
  if (is_folder && text.back() != '/') {
    text += '/';
  }
  return std::shared_ptr<NSURL>(new NSURL(std::move(text)));
}

std::optional<std::string> NSURL::scheme() const {
  return as_written(split(text_).scheme);
}
std::optional<std::string> NSURL::host() const {
  return decoded(split(text_).host);
}
std::optional<std::string> NSURL::user() const {
  return decoded(split(text_).user);
}
std::optional<std::string> NSURL::password() const {
  return as_written(split(text_).password);
}
std::optional<std::string> NSURL::parameterString() const {
  return as_written(split(text_).parameters);
}
std::optional<std::string> NSURL::query() const {
  return as_written(split(text_).query);
}
std::optional<std::string> NSURL::fragment() const {
  return as_written(split(text_).fragment);
}

std::optional<std::string> NSURL::path() const {
  return decoded(without_trailing_slashes(split(text_).path));
}

std::optional<std::string> NSURL::file_system_path() const {
  const Piece path = without_trailing_slashes(split(text_).path);
  return path ? percent_decode_bytes(*path) : std::nullopt;
}

std::optional<std::int64_t> NSURL::port() const {
  const Piece port = split(text_).port;
  if (!port || port->empty() || !std::all_of(port->begin(), port->end(), is_digit)) {
    return std::nullopt;
  }
  return integer_of_text(*port);
}

bool NSURL::isFileURL() const {
  const Piece scheme = split(text_).scheme;
  constexpr std::string_view kFile = "file";
  return scheme && std::equal(scheme->begin(), scheme->end(), kFile.begin(), kFile.end(),
                              [](char a, char b) { return (a | 0x20) == b; });
}

bool NSURL::isEqual(const Object* other) const {
  const auto* url = dynamic_cast<const NSURL*>(other);
  return url != nullptr && url->text_ == text_;
}

std::shared_ptr<NSURL> URLByAppendingPathComponent(const std::shared_ptr<NSURL>& url,
                                                   std::string_view component) {
  if (!url) {
    return nullptr;
  }
  const std::string& text = url->absoluteString();
  const std::size_t path_end = std::min(text.find_first_of("?#"), text.size());
  return NSURL::URLWithString(appending_path_component(std::string_view(text).substr(0, path_end),
                                                       percent_encode_path(component)) +
                              text.substr(path_end));
}

}  // namespace quoll::foundation
