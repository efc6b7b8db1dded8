#include "quoll/requestutils/base64_text.h"

#include "quoll/foundation/base64.h"
#include "quoll/foundation/text.h"

namespace quoll::RequestUtils {

std::optional<std::string> base64EncodedString(std::string_view text) {
  return text.empty() ? std::nullopt : std::optional(foundation::base64_encode(text));
}

std::optional<std::string> base64DecodedString(std::string_view text) {
  std::string bytes = foundation::base64_decode_digits(text);
  if (bytes.empty() || !foundation::is_utf8(bytes)) {
    return std::nullopt;
  }
  return bytes;
}

}  // namespace quoll::RequestUtils
