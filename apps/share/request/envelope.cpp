#include "apps/share/request/envelope.h"

#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"

namespace quoll::share {

std::string why_no_recipient(std::string_view address) {
  if (foundation::trim(address).empty()) {
    return "it is empty";
  }
  if (!foundation::is_utf8(address)) {
    return "it is not UTF-8";
  }
  // In a command it separates addresses.
  if (address.find(';') != std::string_view::npos) {
    return "it has a semicolon; give each address by itself";
  }
  // Such a character ends the line of a header, or makes an address look like another.
  return foundation::printable(address) == address ? ""
                                                   : "it has a line break or a control character";
}

}  // namespace quoll::share
