// The loops of the codecs for AVX2 answer what those in plain C++ do, whatever the bytes are.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/require.h"
#include "quoll/foundation/base64_kernel.h"
#include "quoll/foundation/percent_kernel.h"
#include "quoll/foundation/utf8_kernel.h"

namespace {

namespace base64 = quoll::foundation::base64;
namespace percent = quoll::foundation::percent;
namespace utf8 = quoll::foundation::utf8;
using quoll::fuzz::require;

constexpr percent::KeptCharacters kKept("ABCXYZabcxyz0189-._~", "/@");

std::string encoded(const percent::Kernel& kernel, std::string_view text) {
  std::vector<char> to(3 * text.size() + percent::kSlack);
  return {to.data(), kernel.encode(text, kKept, to.data())};
}

/// With a "%" in front when the text is malformed.
std::string decoded(const percent::Kernel& kernel, std::string_view text, char plus) {
  std::vector<char> to(text.size() + percent::kSlack);
  const char* const end = kernel.decode(text, plus, to.data());
  return end == nullptr ? "%" : "=" + std::string(static_cast<const char*>(to.data()), end);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (percent::avx2() != nullptr) {
    const std::string all = encoded(percent::portable(), text);
    require(encoded(*percent::avx2(), text) == all);
    for (const std::string_view escapes : {text, std::string_view(all)}) {
      for (const char plus : {'+', ' '}) {
        require(decoded(*percent::avx2(), escapes, plus) ==
                decoded(percent::portable(), escapes, plus));
      }
    }
  }
  if (utf8::avx2_check() != nullptr) {
    require(utf8::avx2_check()(text) == utf8::is_utf8_portably(text));
  }
  if (base64::avx2() != nullptr) {
    const std::string digits = base64::encode_with(nullptr, text);
    require(base64::encode_with(base64::avx2(), text) == digits);
    require(base64::decode_with(base64::avx2(), digits) == text);
    require(base64::decode_with(base64::avx2(), text) == base64::decode_with(nullptr, text));
  }
  return 0;
}
