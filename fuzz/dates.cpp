// Reads any text as a date of the exchange format, and as a number in a locale's digits. A date is
// written as the same text again. The digits of a number never become longer.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "quoll/foundation/decimal_digits.h"
#include "quoll/foundation/exchange_date.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quoll::foundation;
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (const auto date = date_of_exchange_text(text)) {
    // "2024-03-07 10:15:00 +0000"
    const std::string printed = Value(*date).description();
    if (printed.substr(0, 10) + "T" + printed.substr(11, 8) + "Z" != text) {
      std::abort();
    }
  }
  if (ascii_number(text).size() > text.size()) {
    std::abort();
  }
  return 0;
}
