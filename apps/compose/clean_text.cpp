#include "apps/compose/clean_text.h"

#include "quoll/foundation/text.h"

namespace quoll::compose {
namespace {

/// How many bytes the control character has that stands at `at`; 0 when none does.
std::size_t control_at(std::string_view text, std::size_t at) {
  const auto byte = static_cast<unsigned char>(text[at]);
  if (byte < 0x20 || byte == 0x7F) {
    return 1;
  }
  const std::string_view rest = text.substr(at);
  if (byte == 0xC2 && rest.size() > 1 && static_cast<unsigned char>(rest[1]) < 0xA0) {
    return 2;
  }
  return rest.starts_with("\u2028") || rest.starts_with("\u2029") ? 3 : 0;
}

/// How many bytes the invisible character has that stands at `at`; 0 when none does.
std::size_t invisible_at(std::string_view text, std::size_t at) {
  const std::string_view rest = text.substr(at);
  if (rest.starts_with("\u00AD") || rest.starts_with("\u061C")) {
    return 2;
  }
  const auto between = [&](std::string_view first, std::string_view last) {
    return rest.substr(0, 3) >= first && rest.substr(0, 3) <= last;
  };
  // NOLINTNEXTLINE(misc-misleading-bidirectional): they are what is looked for, U+202A to U+202E
  const bool is_direction = between("\xE2\x80\xAA", "\xE2\x80\xAE");
  return is_direction || between("\u200B", "\u200F") || between("\u2060", "\u206F") ||
                 between("\uFEFF", "\uFEFF")
             ? 3
             : 0;
}

/// The text; `append` writes what stands for a control character.
template <typename Append>
std::string with_controls(std::string_view text, Append append) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    if (const std::size_t length = control_at(text, at); length == 0) {
      out += text[at++];
    } else {
      append(out, text.substr(at, length));
      at += length;
    }
  }
  return out;
}

void append_picture(std::string& out, char c) {
  const auto byte = static_cast<unsigned char>(c);
  out.append({'\xE2', '\x90', static_cast<char>(byte == 0x7F ? 0xA1 : 0x80 + byte)});
}

}  // namespace

bool is_clean(std::string_view text, std::string_view allowed) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (control_at(text, at) != 0 && allowed.find(text[at]) == std::string_view::npos) {
      return false;
    }
  }
  return true;
}

std::string one_line(std::string_view text) {
  return std::string(foundation::trim(
      with_controls(text, [](std::string& out, std::string_view) { out += ' '; })));
}

std::string with_line_feeds(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\r') {
      out += text[at];
    } else if (at + 1 == text.size() || text[at + 1] != '\n') {
      out += '\n';
    }
  }
  return out;
}

std::string clean_lines(std::string_view text) {
  return with_controls(with_line_feeds(text), [](std::string& out, std::string_view control) {
    if (control == "\t") {
      out += '\t';
    } else if (control == "\n" || control == "\u0085" || control.size() == 3) {
      out += '\n';
    } else if (control.size() == 1) {
      append_picture(out, control[0]);
    } else {
      out += "\uFFFD";
    }
  });
}

std::string with_control_pictures(std::string_view name) {
  return with_controls(name, [](std::string& out, std::string_view control) {
    if (control.size() == 1) {
      append_picture(out, control[0]);
    } else {
      out += control;
    }
  });
}

std::string without_invisible(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    if (const std::size_t length = invisible_at(text, at); length != 0) {
      at += length;
    } else {
      out += text[at++];
    }
  }
  return out;
}

bool has_invisible(std::string_view text) {
  return without_invisible(text).size() != text.size();
}

std::string without_encoded_words(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '?' && out.ends_with('=')) {
      out += ' ';
    }
    out += c;
  }
  return out;
}

}  // namespace quoll::compose
