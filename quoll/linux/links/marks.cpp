#include "quoll/linux/links/marks.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

namespace quoll::links {

namespace {

struct Range {
  std::uint32_t first;
  std::uint32_t last;
  Mark mark;
};

/// Sorted. White space is Unicode's separators and U+0085; quotes are Unicode's quotation marks.
constexpr std::array kRanges{
    Range{0x0085, 0x0085, Mark::kStop},        Range{0x00A0, 0x00A0, Mark::kStop},
    Range{0x00AB, 0x00AB, Mark::kStop},        Range{0x00BB, 0x00BB, Mark::kStop},
    Range{0x1680, 0x1680, Mark::kStop},        Range{0x2000, 0x200A, Mark::kStop},
    Range{0x2010, 0x2017, Mark::kPunctuation}, Range{0x2018, 0x201F, Mark::kStop},
    Range{0x2020, 0x2027, Mark::kPunctuation}, Range{0x2028, 0x2029, Mark::kStop},
    Range{0x202A, 0x202E, Mark::kPunctuation}, Range{0x202F, 0x202F, Mark::kStop},
    Range{0x2030, 0x2038, Mark::kPunctuation}, Range{0x2039, 0x203A, Mark::kStop},
    Range{0x203B, 0x205E, Mark::kPunctuation}, Range{0x205F, 0x205F, Mark::kStop},
    Range{0x2E42, 0x2E42, Mark::kStop},        Range{0x3000, 0x3000, Mark::kStop},
    Range{0x3001, 0x3003, Mark::kPunctuation}, Range{0x3008, 0x300B, Mark::kPunctuation},
    Range{0x300C, 0x300F, Mark::kStop},        Range{0x3010, 0x301C, Mark::kPunctuation},
    Range{0x301D, 0x301F, Mark::kStop},        Range{0xFE41, 0xFE44, Mark::kStop},
    Range{0xFF01, 0xFF01, Mark::kPunctuation}, Range{0xFF02, 0xFF02, Mark::kStop},
    Range{0xFF03, 0xFF06, Mark::kPunctuation}, Range{0xFF07, 0xFF07, Mark::kStop},
    Range{0xFF08, 0xFF0F, Mark::kPunctuation}, Range{0xFF1A, 0xFF20, Mark::kPunctuation},
    Range{0xFF62, 0xFF63, Mark::kStop},
};

/// The length in bytes of a character of these ranges, by its first byte; 0 for any other.
constexpr std::size_t length_after(unsigned lead) {
  switch (lead) {
    case 0xC2:
      return 2;
    case 0xE1:
    case 0xE2:
    case 0xE3:
    case 0xEF:
      return 3;
    default:
      return 0;
  }
}

}  // namespace

MarkAt mark_at(std::string_view text, std::size_t position) {
  const auto byte = [&](std::size_t at) -> std::uint32_t {
    return static_cast<unsigned char>(text[at]);
  };
  const std::size_t length = length_after(byte(position));
  if (length == 0 || text.size() - position < length) {
    return {};
  }
  std::uint32_t character =
      byte(position) & 0x0FU;  // right for two- and three-byte characters here
  for (std::size_t at = position + 1; at < position + length; ++at) {
    if ((byte(at) & 0xC0U) != 0x80U) {
      return {};
    }
    character = character << 6U | (byte(at) & 0x3FU);
  }
  const auto* const after =
      std::upper_bound(kRanges.begin(), kRanges.end(), character,
                       [](std::uint32_t c, const Range& range) { return c < range.first; });
  if (after == kRanges.begin() || character > std::prev(after)->last) {
    return {};
  }
  return {std::prev(after)->mark, length};
}

}  // namespace quoll::links
