#include "apps/compose/addresses.h"

#include <algorithm>
#include <utility>

#include "apps/compose/clean_text.h"
#include "apps/compose/mail_header.h"
#include "apps/compose/mime_handles.h"
#include "apps/compose/plain_address.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/text.h"

namespace quoll::compose {
namespace {

using foundation::trim;

enum class Comments : bool { kAreText, kAreSkipped };

/// Goes through a text and stops at signs that stand outside of quotes.
class Outside {
 public:
  Outside(std::string_view text, Comments comments)
      : text_(text), has_comments_(comments == Comments::kAreSkipped) {}

  /// The first of `signs` from `at` on, or the end.
  std::size_t find(std::string_view signs, std::size_t at) {
    for (; at < text_.size() && signs.find(text_[at]) == std::string_view::npos; ++at) {
      if (text_[at] == '"') {
        at = end_of('"', has_quotes_, at);
      } else if (text_[at] == '(') {
        at = end_of(')', has_comments_, at);
      }
    }
    return at;
  }

 private:
  // Where the quote or comment ends. One that has no end is a sign like others; then there is no
  // other, and nobody looks for it again.
  std::size_t end_of(char sign, bool& has, std::size_t begin) const {
    for (std::size_t at = begin + 1; has && at < text_.size(); ++at) {
      if (text_[at] == sign) {
        return at;
      }
      at += text_[at] == '\\' ? 1 : 0;
    }
    has = false;
    return begin;
  }

  std::string_view text_;
  bool has_quotes_ = true;
  bool has_comments_;
};

/// The pieces of a text between signs that stand outside of quotes.
std::vector<std::string_view> split(std::string_view text, char sign, Comments comments) {
  Outside outside(text, comments);
  std::vector<std::string_view> pieces;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = outside.find(std::string_view(&sign, 1), begin);
    pieces.push_back(trim(text.substr(begin, end - begin)));
    begin = end + 1;
  }
  return pieces;
}

/// A name as it was meant: without its quotes.
std::string without_quotes(std::string_view name) {
  std::string out;
  for (std::size_t at = 0; at < name.size(); ++at) {
    if (name[at] == '\\' && at + 1 < name.size()) {
      out += name[++at];
    } else if (name[at] != '"') {
      out += name[at];
    }
  }
  return std::string(trim(out));
}

bool is_ascii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// A word that the receiving system knows, such as "root".
bool is_local_name(std::string_view text) {
  constexpr std::size_t kLongest = 64;
  return text.size() <= kLongest && is_words(text) && is_ascii(text) &&
         text.find("=?") == std::string_view::npos;
}

struct Mailbox {
  std::string name;
  std::string address;  ///< empty for a text that is no address
};

// The text around an address: "NAME <ADDRESS>", "ADDRESS (NAME)" or "ADDRESS".
Mailbox taken_apart(std::string_view text) {
  if (const auto begin = text.rfind('<'); text.ends_with('>') && begin != std::string_view::npos) {
    return {without_quotes(text.substr(0, begin)),
            std::string(trim(text.substr(begin + 1, text.size() - begin - 2)))};
  }
  if (const auto begin = text.find('('); text.ends_with(')') && begin != std::string_view::npos) {
    return {without_quotes(text.substr(begin + 1, text.size() - begin - 2)),
            std::string(trim(text.substr(0, begin)))};
  }
  return {"", std::string(text)};
}

Mailbox read_mailbox(std::string_view text) {
  Mailbox mailbox = taken_apart(text);
  if (is_local_name(mailbox.address)) {
    // Without a name it would be read as the beginning of the next address.
    mailbox.name = mailbox.name.empty() ? mailbox.address : mailbox.name;
  } else if (!is_address(mailbox.address)) {
    const bool has_name = mailbox.address.empty() && !mailbox.name.empty();
    mailbox = {has_name ? mailbox.name : std::string(text), ""};
  }
  mailbox.name = trim(without_invisible(mailbox.name));
  return mailbox;
}

// The address with its domain as the name service has it.
std::string ascii_address(const std::string& address) {
  if (is_ascii(address)) {
    return address;
  }
  const MimeHandle<InternetAddress> mailbox(internet_address_mailbox_new(nullptr, address.c_str()));
  const char* ascii =
      internet_address_mailbox_get_idn_addr(INTERNET_ADDRESS_MAILBOX(mailbox.get()));
  return ascii != nullptr ? ascii : address;
}

std::string written(const Mailbox& mailbox) {
  const std::string address = ascii_address(mailbox.address);
  return mailbox.name.empty() ? address : header_phrase(mailbox.name) + " <" + address + ">";
}

void add(Addresses& addresses, std::string_view text, std::string_view before = "",
         std::string_view after = "") {
  const Mailbox mailbox = read_mailbox(text);
  addresses.written.push_back(std::string(before) + written(mailbox) + std::string(after));
  const std::string name = without_encoded_words(mailbox.name);
  std::string plain =
      name.empty() ? mailbox.address : plain_phrase(name) + " <" + mailbox.address + ">";
  if (is_plain_address(plain)) {
    addresses.plain.push_back(std::move(plain));
  } else {
    ++addresses.not_plain;
  }
}

void add_group(Addresses& addresses, std::string_view name, std::vector<std::string_view> members) {
  std::erase(members, "");
  const std::string before = header_phrase(without_invisible(without_quotes(name))) + ":";
  if (members.empty()) {
    addresses.written.push_back(before + ";");
  }
  for (std::size_t i = 0; i < members.size(); ++i) {
    add(addresses, members[i], i == 0 ? before + " " : "", i + 1 == members.size() ? ";" : "");
  }
}

}  // namespace

Addresses read_addresses(std::string_view joined) {
  Addresses addresses;
  const std::string line = one_line(joined);
  for (const std::string_view entry : split(line, ';', Comments::kAreText)) {
    auto members = split(entry, ',', Comments::kAreSkipped);
    const std::string_view first = members.front();
    const std::size_t colon = Outside(first, Comments::kAreSkipped).find(":@<", 0);
    if (colon < first.size() && colon > 0 && first[colon] == ':') {
      members.front() = trim(first.substr(colon + 1));
      add_group(addresses, first.substr(0, colon), std::move(members));
      continue;
    }
    for (const std::string_view member : members) {
      // For a recipient without an address the sender has written the text for null.
      if (!member.empty() && member != foundation::kNullText) {
        add(addresses, member);
      }
    }
  }
  return addresses;
}

}  // namespace quoll::compose
