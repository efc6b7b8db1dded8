#include "quoll/linux/links/address_text.h"

#include <array>

#include "quoll/foundation/percent.h"

namespace quoll::links {

namespace {

constexpr std::array<bool, 256> make_allowed() {
  constexpr std::string_view kCharacters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.!~*();/?:@&=+$,[]";
  std::array<bool, 256> allowed{};
  for (const char c : kCharacters) {
    allowed[static_cast<unsigned char>(c)] = true;
  }
  return allowed;
}

constexpr std::array<bool, 256> kAllowed = make_allowed();

}  // namespace

void append_address(std::string& url, std::string_view part) {
  bool fragment = url.find('#') != std::string::npos;
  for (std::size_t i = 0; i < part.size(); ++i) {
    const char c = part[i];
    const bool escape = c == '%' && foundation::percent_decode_bytes(part.substr(i, 3)).has_value();
    const bool first_hash = c == '#' && !fragment;
    fragment = fragment || first_hash;
    if (kAllowed[static_cast<unsigned char>(c)] || escape || first_hash) {
      url += c;
    } else {
      foundation::percent_escape_append(url, c);
    }
  }
}

}  // namespace quoll::links
