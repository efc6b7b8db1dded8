#include "apps/quoll-compose/message_headers.h"

#include <algorithm>
#include <string>
#include <vector>

#include "apps/quoll-compose/compose_command.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/text.h"

namespace quoll::receiver {
namespace {

// A header is one line, whatever a stranger wrote into the field.
std::string one_line(std::string text) {
  std::ranges::replace_if(
      text, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
  return std::string(foundation::trim(text));
}

/// The pieces between semicolons that stand outside quotes.
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

void add_addresses(InternetAddressList* list, const std::string& joined) {
  for (const auto& piece : split(joined)) {
    const std::string address = one_line(piece);
    // A sender that had a recipient without an address wrote the text for null.
    if (address.empty() || address == foundation::kNullText) {
      continue;
    }
    const MimeHandle<InternetAddressList> parsed(
        internet_address_list_parse(nullptr, address.c_str()));
    if (parsed) {
      internet_address_list_append(list, parsed.get());
    } else {
      const MimeHandle<InternetAddress> named(internet_address_mailbox_new(address.c_str(), ""));
      internet_address_list_add(list, named.get());
    }
  }
}

}  // namespace

MimeHandle<GMimeMessage> message_with_headers(const ExtensionMessage& message) {
  MimeHandle<GMimeMessage> made(g_mime_message_new(FALSE));
  g_mime_object_set_header(GMIME_OBJECT(made.get()), "X-Unsent", "1", nullptr);
  g_mime_message_set_subject(made.get(), one_line(text_of_field(message.subject())).c_str(),
                             "utf-8");
  add_addresses(g_mime_message_get_from(made.get()), text_of_field(message.from()));
  add_addresses(g_mime_message_get_to(made.get()), text_of_field(message.toString()));
  add_addresses(g_mime_message_get_cc(made.get()), text_of_field(message.ccString()));
  add_addresses(g_mime_message_get_bcc(made.get()), text_of_field(message.bccString()));
  return made;
}

}  // namespace quoll::receiver
