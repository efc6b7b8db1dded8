#include "quoll/foundation/percent_kernel.h"

#ifdef __x86_64__

#include <immintrin.h>

#include <bit>
#include <cstdint>

namespace quoll::foundation::percent {

namespace {

constexpr std::size_t kBlock = 32;

/// Where the characters of four bytes come from in the sixteen that `encode_block` puts side by
/// side: the bytes, their high digits, their low digits, and "%".
struct alignas(32) EncodedGroup {
  std::array<unsigned char, 16> from{};
  std::uint64_t length = 0;
};

/// One for each set of bytes that are escaped.
constexpr std::array<EncodedGroup, 16> make_groups() {
  std::array<EncodedGroup, 16> groups;
  for (unsigned escaped = 0; escaped < groups.size(); ++escaped) {
    EncodedGroup& group = groups[escaped];
    for (unsigned char byte = 0; byte < 4; ++byte) {
      if ((escaped >> byte & 1U) == 0) {
        group.from[group.length++] = byte;
        continue;
      }
      group.from[group.length++] = 12;
      group.from[group.length++] = static_cast<unsigned char>(4 + byte);
      group.from[group.length++] = static_cast<unsigned char>(8 + byte);
    }
  }
  return groups;
}

/// For each set of eight characters that are kept, where they are.
constexpr std::array<std::array<unsigned char, 8>, 256> make_kept_places() {
  std::array<std::array<unsigned char, 8>, 256> places{};
  for (unsigned kept = 0; kept < places.size(); ++kept) {
    std::size_t length = 0;
    for (unsigned char character = 0; character < 8; ++character) {
      if ((kept >> character & 1U) != 0) {
        places[kept][length++] = character;
      }
    }
  }
  return places;
}

constexpr auto kGroups = make_groups();
constexpr auto kKeptPlaces = make_kept_places();
constexpr KeptCharacters kHexDigits("0123456789ABCDEFabcdef");

[[gnu::target("avx2")]] __m256i load(const char* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}
[[gnu::target("avx2")]] void store(char* to, __m256i bytes) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
}
/// The table in both halves, since each half looks up for itself.
[[gnu::target("avx2")]] __m256i twice(const unsigned char* table) {
  return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table)));
}
[[gnu::target("avx2")]] __m256i high_digits(__m256i bytes) {
  return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(15));
}
[[gnu::target("avx2")]] std::uint32_t bits(__m256i bytes) {
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}

/// All ones for each byte that is none of the characters. A byte above 127 finds zero.
[[gnu::target("avx2")]] __m256i others(__m256i bytes, __m256i by_low_digit) {
  const __m256i bit_of_high = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201U));
  return _mm256_cmpeq_epi8(_mm256_and_si256(_mm256_shuffle_epi8(by_low_digit, bytes),
                                            _mm256_shuffle_epi8(bit_of_high, high_digits(bytes))),
                           _mm256_setzero_si256());
}

/// Writes the characters of four bytes, of which those are escaped that have one of the lowest
/// bits.
[[gnu::target("avx2")]] char* put_group(__m128i characters, std::uint32_t escaped, char* to) {
  const EncodedGroup& group = kGroups[escaped & 15U];
  const __m128i from = _mm_load_si128(reinterpret_cast<const __m128i*>(group.from.data()));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_shuffle_epi8(characters, from));
  return to + group.length;
}

[[gnu::target("avx2")]] char* encode_block(__m256i bytes, __m256i by_low_digit, char* to) {
  const std::uint32_t escaped = bits(others(bytes, by_low_digit));
  if (escaped == 0) {
    store(to, bytes);
    return to + kBlock;
  }
  const __m256i digits = twice(reinterpret_cast<const unsigned char*>("0123456789ABCDEF"));
  const __m256i high = _mm256_shuffle_epi8(digits, high_digits(bytes));
  const __m256i low = _mm256_shuffle_epi8(digits, _mm256_and_si256(bytes, _mm256_set1_epi8(15)));
  const __m256i percent = _mm256_set1_epi8('%');
  const __m256i first = _mm256_unpacklo_epi32(bytes, high);
  const __m256i second = _mm256_unpackhi_epi32(bytes, high);
  const __m256i first_low = _mm256_unpacklo_epi32(low, percent);
  const __m256i second_low = _mm256_unpackhi_epi32(low, percent);
  const __m256i groups_0_4 = _mm256_unpacklo_epi64(first, first_low);
  const __m256i groups_1_5 = _mm256_unpackhi_epi64(first, first_low);
  const __m256i groups_2_6 = _mm256_unpacklo_epi64(second, second_low);
  const __m256i groups_3_7 = _mm256_unpackhi_epi64(second, second_low);
  to = put_group(_mm256_castsi256_si128(groups_0_4), escaped, to);
  to = put_group(_mm256_castsi256_si128(groups_1_5), escaped >> 4U, to);
  to = put_group(_mm256_castsi256_si128(groups_2_6), escaped >> 8U, to);
  to = put_group(_mm256_castsi256_si128(groups_3_7), escaped >> 12U, to);
  to = put_group(_mm256_extracti128_si256(groups_0_4, 1), escaped >> 16U, to);
  to = put_group(_mm256_extracti128_si256(groups_1_5, 1), escaped >> 20U, to);
  to = put_group(_mm256_extracti128_si256(groups_2_6, 1), escaped >> 24U, to);
  return put_group(_mm256_extracti128_si256(groups_3_7, 1), escaped >> 28U, to);
}

[[gnu::target("avx2")]] char* encode(std::string_view text, const KeptCharacters& kept, char* to) {
  const __m256i by_low_digit = twice(kept.by_low_digit().data());
  for (; text.size() >= kBlock; text.remove_prefix(kBlock)) {
    to = encode_block(load(text.data()), by_low_digit, to);
  }
  return portable().encode(text, kept, to);
}

/// The values of hexadecimal digits; whatever for other characters.
[[gnu::target("avx2")]] __m256i values(__m256i digits) {
  const __m256i letter = _mm256_cmpgt_epi8(digits, _mm256_set1_epi8('9'));
  return _mm256_and_si256(_mm256_add_epi8(digits, _mm256_and_si256(letter, _mm256_set1_epi8(9))),
                          _mm256_set1_epi8(15));
}

/// Writes those of the lower eight characters that have their bit in `kept`.
[[gnu::target("avx2,popcnt")]] char* put_eight(__m128i characters, std::uint32_t kept, char* to) {
  const auto* const from = reinterpret_cast<const __m128i*>(kKeptPlaces[kept & 255U].data());
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to),
                   _mm_shuffle_epi8(characters, _mm_loadl_epi64(from)));
  return to + _mm_popcnt_u32(kept & 255U);
}

/// Writes those characters of a block that have their bit in `kept`.
[[gnu::target("avx2,popcnt")]] char* put_kept(__m256i block, std::uint32_t kept, char* to) {
  const __m128i low = _mm256_castsi256_si128(block);
  const __m128i high = _mm256_extracti128_si256(block, 1);
  to = put_eight(low, kept, to);
  to = put_eight(_mm_unpackhi_epi64(low, low), kept >> 8U, to);
  to = put_eight(high, kept >> 16U, to);
  return put_eight(_mm_unpackhi_epi64(high, high), kept >> 24U, to);
}

[[gnu::target("avx2,popcnt")]] char* decode(std::string_view text, char plus, char* to) {
  const __m256i hexadecimal = twice(kHexDigits.by_low_digit().data());
  std::uint32_t taken = 0;  // the characters of the block that belong to the escapes before it
  for (; text.size() >= kBlock + 2; text.remove_prefix(kBlock)) {
    const __m256i block = load(text.data());
    const __m256i is_escape = _mm256_cmpeq_epi8(block, _mm256_set1_epi8('%'));
    const __m256i is_plus = _mm256_cmpeq_epi8(block, _mm256_set1_epi8('+'));
    const __m256i plain = _mm256_blendv_epi8(block, _mm256_set1_epi8(plus), is_plus);
    const std::uint64_t escapes = bits(is_escape);
    if (escapes == 0 && taken == 0) {
      store(to, plain);
      to += kBlock;
      continue;
    }
    const __m256i high = load(text.data() + 1);
    const __m256i low = load(text.data() + 2);
    const __m256i wrong = _mm256_or_si256(others(high, hexadecimal), others(low, hexadecimal));
    if (_mm256_testz_si256(wrong, is_escape) == 0) {
      return nullptr;
    }
    const __m256i value = _mm256_or_si256(_mm256_slli_epi16(values(high), 4), values(low));
    const std::uint64_t digits = escapes << 1U | escapes << 2U | taken;
    to = put_kept(_mm256_blendv_epi8(plain, value, is_escape), ~static_cast<std::uint32_t>(digits),
                  to);
    taken = static_cast<std::uint32_t>(digits >> kBlock);
  }
  text.remove_prefix(static_cast<std::size_t>(std::popcount(taken)));
  return portable().decode(text, plus, to);
}

}  // namespace

const Kernel* avx2() {
  static constexpr Kernel kKernel{encode, decode};
  static const bool is_there = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt");
  return is_there ? &kKernel : nullptr;
}

}  // namespace quoll::foundation::percent

#else

const quoll::foundation::percent::Kernel* quoll::foundation::percent::avx2() {
  return nullptr;
}

#endif
