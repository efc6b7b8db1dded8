#include "quoll/foundation/base64_kernel.h"

#ifdef __x86_64__

#include <immintrin.h>

namespace quoll::foundation::base64 {

namespace {

constexpr std::size_t kDigits = 32;  // of a block
constexpr std::size_t kBytes = 24;

/// Sixteen bytes for each half of a vector.
[[gnu::target("avx2")]] __m256i in_both_halves(__m128i half) {
  return _mm256_broadcastsi128_si256(half);
}

/// Digits of the alphabet for values below 64.
[[gnu::target("avx2")]] __m256i digits_of(__m256i values) {
  // What a value and its digit differ by: found under 0 for small letters, 1 to 10 for the ten
  // digits, 11 and 12 for "+" and "/", and 13 for capitals.
  const __m256i differences = in_both_halves(
      _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                    '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0));
  const __m256i is_capital = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), values);
  const __m256i kind = _mm256_or_si256(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                       _mm256_and_si256(is_capital, _mm256_set1_epi8(13)));
  return _mm256_add_epi8(_mm256_shuffle_epi8(differences, kind), values);
}

[[gnu::target("avx2")]] std::size_t encode(std::string_view bytes, char* to) {
  constexpr std::size_t kHalf = kBytes / 2;
  constexpr std::size_t kRead = kHalf + sizeof(__m128i);
  // The three bytes of each group as 1 0 2 1: two sixteen-bit words with two digits in each.
  const __m256i order =
      in_both_halves(_mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
  std::size_t done = 0;
  for (; bytes.size() - done >= kRead; done += kBytes) {
    const auto* const first = reinterpret_cast<const __m128i*>(bytes.data() + done);
    const auto* const second = reinterpret_cast<const __m128i*>(bytes.data() + done + kHalf);
    const __m256i words =
        _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(first)),
                                                    _mm_loadu_si128(second), 1),
                            order);
    // Multiplications shift each word by its own number of bits: the first and third digit of a
    // group to the right, the second and fourth to the left.
    const __m256i odd = _mm256_mulhi_epu16(_mm256_and_si256(words, _mm256_set1_epi32(0x0FC0FC00)),
                                           _mm256_set1_epi32(0x04000040));
    const __m256i even = _mm256_mullo_epi16(_mm256_and_si256(words, _mm256_set1_epi32(0x003F03F0)),
                                            _mm256_set1_epi32(0x01000010));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), digits_of(_mm256_or_si256(odd, even)));
    to += kDigits;
  }
  return done;
}

/// The values of digits; false when one of the characters is none.
[[gnu::target("avx2")]] bool values_of(__m256i& characters) {
  const __m256i slash = _mm256_set1_epi8('/');
  const __m256i high = _mm256_and_si256(_mm256_srli_epi32(characters, 4), slash);
  // A bit for each set of high digits that a low digit does not go with.
  const __m256i wrong_for_low =
      in_both_halves(_mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13,
                                   0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
  const __m256i set_of_high =
      in_both_halves(_mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10,
                                   0x10, 0x10, 0x10, 0x10, 0x10));
  const __m256i wrong = _mm256_shuffle_epi8(wrong_for_low, _mm256_and_si256(characters, slash));
  if (_mm256_testz_si256(wrong, _mm256_shuffle_epi8(set_of_high, high)) == 0) {
    return false;
  }
  // What to add, by the high digit; "/" has the place in front of that of "+".
  const __m256i differences =
      in_both_halves(_mm_setr_epi8(0, 63 - '/', 62 - '+', 52 - '0', 0 - 'A', 0 - 'A', 26 - 'a',
                                   26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0));
  const __m256i is_slash = _mm256_cmpeq_epi8(characters, slash);
  characters = _mm256_add_epi8(characters,
                               _mm256_shuffle_epi8(differences, _mm256_add_epi8(is_slash, high)));
  return true;
}

[[gnu::target("avx2")]] std::size_t decode(std::string_view text, char* to) {
  constexpr std::size_t kLeast = kDigits + 12;  // so that a whole vector can be written
  const __m256i order =
      in_both_halves(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
  std::size_t done = 0;
  for (; text.size() - done >= kLeast; done += kDigits) {
    __m256i values = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text.data() + done));
    if (!values_of(values)) {
      break;
    }
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(groups, order),
                                                      _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
    to += kBytes;
  }
  return done;
}

}  // namespace

const Kernel* avx2() {
  static constexpr Kernel kKernel{encode, decode};
  static const bool is_there = __builtin_cpu_supports("avx2");
  return is_there ? &kKernel : nullptr;
}

}  // namespace quoll::foundation::base64

#else

const quoll::foundation::base64::Kernel* quoll::foundation::base64::avx2() {
  return nullptr;
}

#endif
