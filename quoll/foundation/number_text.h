#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Numbers in texts: the platform's lenient readings and the one way to print a real. None of them
/// looks at a locale.
namespace quoll::foundation {

/// Leading white space, one sign, decimal digits, stop; saturates at the 64-bit ends. No digits
/// give 0.
[[nodiscard]] std::int64_t integer_of_text(std::string_view text);

/// Leading white space, one sign, zeros, then Y, y, T, t or a digit 1 to 9 is true.
[[nodiscard]] bool boolean_of_text(std::string_view text);

/// Leading white space, one sign, the longest decimal prefix with "." and an optional exponent; no
/// hexadecimal, no infinity. No prefix gives 0. Reduced to single precision as below.
[[nodiscard]] float float_of_text(std::string_view text);

/// The nearest float; beyond the range of single precision its largest finite value, NaN stays NaN.
[[nodiscard]] float single_precision(double number);

/// The number in this base (2 to 16, digits in small letters), with zeros in front when it has
/// fewer than `digits` digits.
[[nodiscard]] std::string padded_number(std::uint64_t number, std::size_t digits, int base = 10);

/// The shortest decimal that reads back as the same real: 0.5, 1, 1e+20.
[[nodiscard]] std::string text_of_real(double real);

}  // namespace quoll::foundation
