#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/value.h"

namespace quoll::test {

/// A value that may stand under a key of a dictionary, and what each reading makes of it; none
/// where the reading raises.
struct Kind {
  const char* reason;
  foundation::Value value;
  std::optional<std::int64_t> integer;
  std::optional<bool> boolean;
  std::optional<float> real;
  /// When it is read as a list of records: how many there are, and how many of those fail.
  struct Elements {
    std::size_t all = 0;
    std::size_t failing = 0;
  };
  std::optional<Elements> elements;
};

/// Every kind of value, absence among them.
inline std::vector<Kind> every_kind() {
  using namespace foundation;
  constexpr auto kRaises = std::nullopt;
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
  using Elements = Kind::Elements;
  using Integer = std::int64_t;
  const auto list = [](std::initializer_list<Value> values) { return List(values); };
  const auto dictionary = [](std::initializer_list<Dictionary::Entry> entries) {
    return Dictionary(entries);
  };
  const Value record = dictionary({{"mail", "m"}});
  return {
      {"absent", {}, Integer{0}, false, 0.0F, Elements{}},
      {"false", false, Integer{0}, false, 0.0F, kRaises},
      {"true", true, Integer{1}, true, 1.0F, kRaises},
      {"the integer 0", 0, Integer{0}, false, 0.0F, kRaises},
      {"an integer", -7, Integer{-7}, true, -7.0F, kRaises},
      {"the largest integer", kMost, kMost, true, 9223372036854775808.0F, kRaises},
      {"the real 0", 0.0, Integer{0}, false, 0.0F, kRaises},
      {"a real", 0.5, Integer{0}, true, 0.5F, kRaises},
      {"a huge real", -1e300, -kMost - 1, true, std::numeric_limits<float>::lowest(), kRaises},
      {"an empty text", "", Integer{0}, false, 0.0F, kRaises},
      {"a text of a number", " 12.5", Integer{12}, true, 12.5F, kRaises},
      {"a text of a word", "YWJj", Integer{0}, true, 0.0F, kRaises},
      {"a text that is not UTF-8", "\xFF\xFE", Integer{0}, false, 0.0F, kRaises},
      {"bytes", Bytes{'1'}, kRaises, kRaises, kRaises, kRaises},
      {"a date", Date{1}, kRaises, kRaises, kRaises, kRaises},
      {"an empty list", list({}), kRaises, kRaises, kRaises, Elements{}},
      {"a list of dictionaries", list({record, dictionary({})}), kRaises, kRaises, kRaises,
       Elements{2, 0}},
      {"a list of anything", list({5, record, "x", list({record})}), kRaises, kRaises, kRaises,
       Elements{4, 3}},
      {"an empty dictionary", dictionary({}), kRaises, kRaises, kRaises, Elements{}},
      {"a dictionary", dictionary({{"k", record}, {"j", 1}}), kRaises, kRaises, kRaises,
       Elements{2, 2}},
      {"an object", NSURL::URLWithString("http://h"), kRaises, kRaises, kRaises, kRaises},
  };
}

/// A dictionary with these values; those that are null are absent.
inline foundation::Dictionary dictionary_of(
    const std::vector<foundation::Dictionary::Entry>& entries) {
  foundation::Dictionary made;
  for (const auto& [key, value] : entries) {
    if (!value.is_null()) {
      made.setObject(value, key);
    }
  }
  return made;
}

}  // namespace quoll::test
