// Reads and writes any bytes as Base64. All readers read back what was written. What the strict
// reader accepts is written again unchanged. Characters between the digits that are not digits
// change nothing.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "quoll/foundation/base64.h"

namespace {

using quoll::foundation::base64_decode;
using quoll::foundation::base64_decode_digits;
using quoll::foundation::base64_decode_ignoring_unknown;
using quoll::foundation::base64_encode;
using quoll::foundation::Bytes;
using quoll::fuzz::require;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes bytes(data, data + size);
  const std::string_view text(reinterpret_cast<const char*>(data), size);

  const std::string encoded = base64_encode(bytes);
  require(base64_encode(text) == encoded);
  require(base64_decode(encoded) == bytes);
  require(base64_decode_ignoring_unknown(encoded) == bytes);
  require(base64_decode_digits(encoded) == text);

  std::string digits;
  for (const char c : text) {
    const bool alone = base64_decode_digits(std::string("AAA") + c).size() == 3;
    digits.append(alone ? 1 : 0, c);
  }
  require(base64_decode_digits(digits) == base64_decode_digits(text));

  if (const auto strict = base64_decode(text)) {
    require(base64_encode(*strict) == text);
    require(base64_decode_ignoring_unknown(text) == strict);
  }
  if (const auto loose = base64_decode_ignoring_unknown(text)) {
    require(base64_decode_digits(text) == std::string(loose->begin(), loose->end()));
  }
  return 0;
}
