#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// The loops of the percent codec: one in plain C++, one for processors with AVX2. Both give the
/// same bytes.
namespace quoll::foundation::percent {

/// What each byte becomes: up to three characters and, in the fourth place, how many of them are
/// meant.
using Encoded = std::array<char, 4>;

/// The characters that are not escaped, all of them ASCII.
class KeptCharacters {
 public:
  constexpr explicit KeptCharacters(std::string_view kept, std::string_view also_kept = "") {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    for (std::size_t byte = 0; byte < encoded_.size(); ++byte) {
      encoded_[byte] = {'%', kDigits[byte >> 4U], kDigits[byte & 15U], 3};
    }
    for (const std::string_view characters : {kept, also_kept}) {
      for (const char c : characters) {
        const auto byte = static_cast<unsigned char>(c);
        encoded_[byte] = {c, 0, 0, 1};
        by_low_digit_[byte & 15U] |= static_cast<unsigned char>(1U << (byte >> 4U));
      }
    }
  }

  [[nodiscard]] constexpr const Encoded& encoded(char c) const {
    return encoded_[static_cast<unsigned char>(c)];
  }
  /// For each low digit, a bit for each high digit below 8 with which it is a kept character.
  [[nodiscard]] constexpr const std::array<unsigned char, 16>& by_low_digit() const {
    return by_low_digit_;
  }

 private:
  std::array<Encoded, 256> encoded_{};
  std::array<unsigned char, 16> by_low_digit_{};
};

/// How much a loop may write behind the end of its result.
inline constexpr std::size_t kSlack = 32;

struct Kernel {
  /// Encodes `text` and answers the end. `to` has room for three times the text and the slack.
  char* (*encode)(std::string_view text, const KeptCharacters& kept, char* to);
  /// Decodes `text`, in which "+" becomes `plus`, and answers the end; null when an escape is
  /// malformed or cut. `to` has room for the text and the slack, and is not the text.
  char* (*decode)(std::string_view text, char plus, char* to);
};

[[nodiscard, gnu::visibility("hidden")]] const Kernel& portable();
/// Null when the processor does not have it.
[[nodiscard, gnu::visibility("hidden")]] const Kernel* avx2();

}  // namespace quoll::foundation::percent
