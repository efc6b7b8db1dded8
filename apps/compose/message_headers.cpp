#include "apps/compose/message_headers.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "apps/compose/compose_command.h"
#include "apps/compose/draft_bodies.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/text.h"

namespace quoll::compose {
namespace {

// Makes one line of a text, whatever a stranger has written into the field.
std::string one_line(std::string text) {
  std::ranges::replace_if(
      text, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
  return std::string(foundation::trim(text));
}

/// True when a text can be written into a header without encoding.
bool is_plain(std::string_view text) {
  constexpr std::size_t kLongestWord = 64;
  std::size_t word = 0;
  for (const char c : text) {
    word = c == ' ' ? 0 : word + 1;
    if (static_cast<unsigned char>(c) >= 0x80 || word > kLongestWord) {
      return false;
    }
  }
  return text.find("=?") == std::string_view::npos;
}

std::string quoted(char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  const bool stays = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  return stays ? std::string(1, c) : std::string{'=', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
}

// The text encoded by RFC 2047, in pieces of whole characters. GMime itself would write pieces of
// Base64, and its reader drops all pieces after one with padding.
std::string header_text(const std::string& text) {
  if (is_plain(text)) {
    return text;
  }
  constexpr std::size_t kLongestPiece = 54;
  constexpr std::size_t kLongestCharacter = 12;
  std::string out;
  std::size_t piece = kLongestPiece;
  for (const char c : text) {
    const bool begins = (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
    if (begins && piece + kLongestCharacter > kLongestPiece) {
      out += out.empty() ? "=?UTF-8?Q?" : "?= =?UTF-8?Q?";
      piece = 0;
    }
    const std::string written = c == ' ' ? "_" : quoted(c);
    piece += written.size();
    out += written;
  }
  return out + "?=";
}

/// Splits a text at semicolons outside of quotes.
std::vector<std::string> split(const std::string& joined) {
  std::vector<std::string> pieces(1);
  bool quoted = false;
  for (const char c : joined) {
    quoted = c == '"' ? !quoted : quoted;
    if (c == ';' && !quoted) {
      pieces.emplace_back();
    } else {
      pieces.back() += c;
    }
  }
  return pieces;
}

// A mailbox that is a single word without a name would be read as the beginning of the next
// address. Angle brackets prevent that, and are written only beside a name; so the word becomes its
// name too.
void name_lone_words(InternetAddressList* list) {
  for (int i = 0; i < internet_address_list_length(list); ++i) {
    InternetAddress* const address = internet_address_list_get_address(list, i);
    if (INTERNET_ADDRESS_IS_GROUP(address)) {
      name_lone_words(internet_address_group_get_members(INTERNET_ADDRESS_GROUP(address)));
      continue;
    }
    const std::string_view word =
        internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(address));
    const char* const name = internet_address_get_name(address);
    if ((name == nullptr || *name == '\0') && word.find('@') == std::string_view::npos) {
      internet_address_set_name(address, std::string(word).c_str());
    }
  }
}

// Splits words that are too long for a line of mail, which has at most 998 bytes and is broken at
// blanks. No address is that long; for a text that a person reads, the pieces will do.
std::string with_words_that_fit(const std::string& text) {
  constexpr std::size_t kLongestWord = 320;
  std::string out;
  std::size_t word = 0;
  for (const char c : text) {
    const bool begins = (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
    word = c == ' ' ? 0 : word + 1;
    if (begins && word > kLongestWord) {
      out += ' ';
      word = 1;
    }
    out += c;
  }
  return out;
}

void add_addresses(InternetAddressList* list, const std::string& joined) {
  for (const auto& piece : split(joined)) {
    const std::string address = with_words_that_fit(one_line(piece));
    // For a recipient without an address the sender has written the text for null.
    if (address.empty() || address == foundation::kNullText) {
      continue;
    }
    const MimeHandle<InternetAddressList> parsed(
        internet_address_list_parse(nullptr, address.c_str()));
    if (parsed) {
      name_lone_words(parsed.get());
      internet_address_list_append(list, parsed.get());
    } else {
      const MimeHandle<InternetAddress> named(internet_address_mailbox_new(address.c_str(), ""));
      internet_address_list_add(list, named.get());
    }
  }
}

void add_written(std::vector<std::string>& texts, InternetAddressList* list) {
  for (int i = 0; i < internet_address_list_length(list); ++i) {
    InternetAddress* const address = internet_address_list_get_address(list, i);
    if (INTERNET_ADDRESS_IS_GROUP(address)) {
      add_written(texts, internet_address_group_get_members(INTERNET_ADDRESS_GROUP(address)));
      continue;
    }
    const std::string_view mailbox =
        internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(address));
    if (mailbox.find('@') != std::string_view::npos) {
      const gio::TextHandle text(internet_address_to_string(address, nullptr, FALSE));
      texts.emplace_back(text.get());
    }
  }
}

}  // namespace

std::string subject_line(const ExtensionMessage& message) {
  return one_line(text_of_field(message.subject()));
}

std::vector<std::string> addresses_in(const std::string& joined) {
  const MimeHandle<InternetAddressList> list(internet_address_list_new());
  add_addresses(list.get(), joined);
  std::vector<std::string> texts;
  add_written(texts, list.get());
  return texts;
}

std::string plain_body(const ExtensionMessage& message) {
  return draft_bodies(text_of_field(message.plainBody()), text_of_field(message.htmlBody())).text;
}

MimeHandle<GMimeMessage> message_with_headers(const ExtensionMessage& message) {
  MimeHandle<GMimeMessage> made(g_mime_message_new(FALSE));
  g_mime_object_set_header(GMIME_OBJECT(made.get()), "X-Unsent", "1", nullptr);
  g_mime_object_set_header(GMIME_OBJECT(made.get()), "Subject",
                           header_text(subject_line(message)).c_str(), nullptr);
  add_addresses(g_mime_message_get_from(made.get()), text_of_field(message.from()));
  add_addresses(g_mime_message_get_to(made.get()), text_of_field(message.toString()));
  add_addresses(g_mime_message_get_cc(made.get()), text_of_field(message.ccString()));
  add_addresses(g_mime_message_get_bcc(made.get()), text_of_field(message.bccString()));
  return made;
}

}  // namespace quoll::compose
