#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The loops of the Base64 codec for processors with AVX2, which do the most of a long text. The
/// rest, and all of it on other processors, is done in plain C++.
namespace quoll::foundation::base64 {

struct Kernel {
  /// Encodes bytes from the front, and answers how many: a multiple of three. Writes four digits
  /// for each three of them and nothing behind those.
  std::size_t (*encode)(std::string_view bytes, char* to);
  /// Decodes digits from the front, in front of the first character that is none, and answers how
  /// many: a multiple of four. `to` has room for three bytes for each four characters of the text.
  std::size_t (*decode)(std::string_view text, char* to);
};

/// Null when the processor does not have it.
[[nodiscard, gnu::visibility("hidden")]] const Kernel* avx2();

/// As the codec does with this kernel; null is none.
[[nodiscard, gnu::visibility("hidden")]] std::string encode_with(const Kernel* kernel,
                                                                 std::string_view bytes);
/// The bytes of all digits, where other characters are skipped.
[[nodiscard, gnu::visibility("hidden")]] std::string decode_with(const Kernel* kernel,
                                                                 std::string_view text);

}  // namespace quoll::foundation::base64
