#include "apps/compose/mail_header.h"

#include <algorithm>

namespace quoll::compose {
namespace {

/// Characters that may stand in a word without quotes. Those beyond ASCII are among them.
bool is_atom(char c) {
  constexpr std::string_view kOthers = "!#$%&'*+-/=?^_`{|}~";
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         static_cast<unsigned char>(c) >= 0x80 || kOthers.find(c) != std::string_view::npos;
}

/// True when a text can be written into a header as it is: it is ASCII, it can be folded, and
/// nobody would decode it.
bool is_plain(std::string_view text) {
  constexpr std::size_t kLongestWord = 64;
  std::size_t word = 0;
  for (const char c : text) {
    word = c == ' ' ? 0 : word + 1;
    if (static_cast<unsigned char>(c) >= 0x80 || word > kLongestWord) {
      return false;
    }
  }
  return text.find("=?") == std::string_view::npos && text.find("  ") == std::string_view::npos;
}

std::string in_quotes(std::string_view name) {
  std::string out = "\"";
  for (const char c : name) {
    out += c == '"' || c == '\\' ? "\\" : "";
    out += c;
  }
  return out + '"';
}

void append_encoded(std::string& out, char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) {
    out += c;
  } else if (c == ' ') {
    out += '_';
  } else {
    out.append({'=', kDigits[byte >> 4U], kDigits[byte & 0xFU]});
  }
}

// The text in pieces of whole characters.
std::string encoded_words(std::string_view text) {
  constexpr std::size_t kLongestPiece = 54;
  constexpr std::size_t kLongestCharacter = 12;
  std::string out;
  std::size_t piece = 0;
  for (const char c : text) {
    const bool begins = (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
    if (out.empty() || (begins && out.size() - piece + kLongestCharacter > kLongestPiece)) {
      out += out.empty() ? "=?UTF-8?Q?" : "?= =?UTF-8?Q?";
      piece = out.size();
    }
    append_encoded(out, c);
  }
  return out + "?=";
}

}  // namespace

// One with "-" in front would look like an option on a command line.
bool is_bare(std::string_view name) {
  return std::ranges::all_of(name, [](char c) { return is_atom(c) || c == ' '; }) &&
         name.find("  ") == std::string_view::npos && !name.starts_with('-');
}

std::string header_text(std::string_view text) {
  return is_plain(text) ? std::string(text) : encoded_words(text);
}

std::string header_phrase(std::string_view name) {
  return is_plain(name) ? plain_phrase(name) : encoded_words(name);
}

std::string plain_phrase(std::string_view name) {
  return is_bare(name) ? std::string(name) : in_quotes(name);
}

void append_header(std::string& out, std::string_view name, std::string_view value) {
  constexpr std::size_t kLine = 76;
  out.append(name) += ':';
  std::size_t line = name.size() + 1;
  while (!value.empty()) {
    const std::string_view word = value.substr(0, value.find(' '));
    value.remove_prefix(std::min(word.size() + 1, value.size()));
    // A line with nothing but blanks would be an obsolete form.
    if (line + 1 + word.size() > kLine && !word.empty() && line > name.size() + 1) {
      out += "\r\n";
      line = 0;
    }
    out.append(" ").append(word);
    line += 1 + word.size();
  }
  out += "\r\n";
}

}  // namespace quoll::compose
