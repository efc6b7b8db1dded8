#include "quoll/foundation/utf8_kernel.h"

#ifdef __x86_64__

#include <immintrin.h>

#include <array>

namespace quoll::foundation::utf8 {

namespace {

constexpr std::size_t kBlock = 32;

/// What can be wrong with two bytes that follow each other, as far as one digit of them tells:
/// wrong is what all three digits say that are looked at.
enum Fault : unsigned char {
  kTooShort = 1U << 0U,  // a lead or ASCII where a continuation has to be
  kTooLong = 1U << 1U,   // a continuation after ASCII
  kOverlong3 = 1U << 2U,
  kTooLarge = 1U << 3U,
  kSurrogate = 1U << 4U,
  kOverlong2 = 1U << 5U,
  kOverlong4 = 1U << 6U,
  kFarTooLarge = kOverlong4,  // told apart by the other digits
  kTwoContinuations =
      1U << 7U,  // right after a lead of three or four bytes, which is looked at later
  kAnySecondDigit = kTooShort | kTooLong | kTwoContinuations,
};

using Faults = std::array<unsigned char, 16>;

constexpr Faults make_by_first_high() {
  Faults faults{};
  for (unsigned digit = 0; digit < 8; ++digit) {
    faults[digit] = kTooLong;
  }
  for (unsigned digit = 8; digit < 12; ++digit) {
    faults[digit] = kTwoContinuations;
  }
  faults[12] = kTooShort | kOverlong2;
  faults[13] = kTooShort;
  faults[14] = kTooShort | kOverlong3 | kSurrogate;
  faults[15] = kTooShort | kTooLarge | kFarTooLarge | kOverlong4;
  return faults;
}

constexpr Faults make_by_first_low() {
  Faults faults{};
  faults.fill(kAnySecondDigit);
  faults[0] |= kOverlong3 | kOverlong2 | kOverlong4;
  faults[1] |= kOverlong2;
  faults[13] |= kSurrogate;
  for (unsigned digit = 4; digit < 16; ++digit) {
    faults[digit] |= digit == 4 ? kTooLarge : kTooLarge | kFarTooLarge;
  }
  return faults;
}

constexpr Faults make_by_second_high() {
  Faults faults{};
  faults.fill(kTooShort);
  constexpr unsigned kEach = kTooLong | kOverlong2 | kTwoContinuations;
  faults[8] = kEach | kOverlong3 | kFarTooLarge | kOverlong4;
  faults[9] = kEach | kOverlong3 | kTooLarge;
  faults[10] = faults[11] = kEach | kSurrogate | kTooLarge;
  return faults;
}

constexpr Faults kByFirstHigh = make_by_first_high();
constexpr Faults kByFirstLow = make_by_first_low();
constexpr Faults kBySecondHigh = make_by_second_high();

[[gnu::target("avx2")]] __m256i looked_up(const Faults& table, __m256i digits) {
  const auto* const row = reinterpret_cast<const __m128i*>(table.data());
  return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(_mm_loadu_si128(row)), digits);
}
[[gnu::target("avx2")]] __m256i high_digits(__m256i bytes) {
  return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(15));
}

/// The bytes of a block that begin a character which goes on behind it, as no zeros.
[[gnu::target("avx2")]] __m256i unfinished(__m256i block) {
  constexpr char kAny = '\xFF';
  const __m256i last_fine =
      _mm256_setr_epi8(kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny,
                       kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny, kAny,
                       kAny, kAny, kAny, '\xEF', '\xDF', '\xBF');
  return _mm256_subs_epu8(block, last_fine);
}

/// No zeros for what is wrong in a block. `before` is the block in front of it.
[[gnu::target("avx2")]] __m256i faults_in(__m256i block, __m256i before) {
  const __m256i middle = _mm256_permute2x128_si256(before, block, 0x21);
  const __m256i one_back = _mm256_alignr_epi8(block, middle, 15);
  const __m256i two_back = _mm256_alignr_epi8(block, middle, 14);
  const __m256i three_back = _mm256_alignr_epi8(block, middle, 13);
  const __m256i faults = _mm256_and_si256(
      _mm256_and_si256(looked_up(kByFirstHigh, high_digits(one_back)),
                       looked_up(kByFirstLow, _mm256_and_si256(one_back, _mm256_set1_epi8(15)))),
      looked_up(kBySecondHigh, high_digits(block)));
  // A second continuation has to be there after a lead of three or four bytes, and nowhere else.
  const __m256i third = _mm256_subs_epu8(two_back, _mm256_set1_epi8(0xE0 - 0x80));
  const __m256i fourth = _mm256_subs_epu8(three_back, _mm256_set1_epi8(0xF0 - 0x80));
  const __m256i needed = _mm256_and_si256(_mm256_or_si256(third, fourth),
                                          _mm256_set1_epi8(static_cast<char>(kTwoContinuations)));
  return _mm256_xor_si256(needed, faults);
}

[[gnu::target("avx2")]] bool is_utf8(std::string_view bytes) {
  __m256i before = _mm256_setzero_si256();
  __m256i faults = _mm256_setzero_si256();
  bool is_whole = false;  // once the zeros behind the text were looked at
  while (!is_whole) {
    __m256i block = _mm256_setzero_si256();
    if (bytes.size() >= kBlock) {
      block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes.data()));
      bytes.remove_prefix(kBlock);
    } else {
      bytes.copy(reinterpret_cast<char*>(&block), bytes.size());
      is_whole = true;
    }
    faults = _mm256_or_si256(
        faults, _mm256_movemask_epi8(block) == 0 ? unfinished(before) : faults_in(block, before));
    before = block;
  }
  return _mm256_testz_si256(faults, faults) != 0;
}

}  // namespace

Check avx2_check() {
  static const bool is_there = __builtin_cpu_supports("avx2");
  return is_there ? is_utf8 : nullptr;
}

}  // namespace quoll::foundation::utf8

#else

quoll::foundation::utf8::Check quoll::foundation::utf8::avx2_check() {
  return nullptr;
}

#endif
