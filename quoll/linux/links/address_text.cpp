#include "quoll/linux/links/address_text.h"

#include "quoll/foundation/percent.h"
#include "quoll/foundation/url_parts.h"

namespace quoll::links {

void append_address(std::string& url, std::string_view part) {
  bool fragment = url.find('#') != std::string::npos;
  for (std::size_t i = 0; i < part.size(); ++i) {
    const char c = part[i];
    const bool escape = c == '%' && foundation::percent_decode_bytes(part.substr(i, 3)).has_value();
    const bool first_hash = c == '#' && !fragment;
    fragment = fragment || first_hash;
    const bool stays = foundation::is_url_character(c) && c != '\'';
    if (stays || escape || first_hash) {
      url += c;
    } else {
      foundation::percent_escape_append(url, c);
    }
  }
}

}  // namespace quoll::links
