#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace quoll::console {

/// JSON as it stands in a line. Objects keep the order of their keys, which is the order in which a
/// dictionary enumerates and so the order in a composed query.
using Json = nlohmann::ordered_json;

/// The request itself is not usable; `what()` says why in one line.
class Refused final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads one JSON text. Integers that do not fit in 64 bits become reals. Refuses what is not
/// UTF-8, not JSON, or nested deeper than a request ever is. A key that stands twice is kept twice.
[[nodiscard]] Json parse_json(std::string_view text);

/// One line of JSON. Numbers that JSON does not know (NaN, the infinities) are written as null.
[[nodiscard]] std::string json_line(const Json& json);

/// Appends an entry whose key is not in `object` yet. The library's own insertion looks at every
/// key before, which makes large dictionaries quadratic.
inline void append(Json& object, std::string key, Json value) {
  object.get_ref<Json::object_t&>().Json::object_t::Container::emplace_back(std::move(key),
                                                                            std::move(value));
}

/// The text itself; another kind of value is refused, naming `what` it stands for.
[[nodiscard]] const std::string& text_in(const Json& json, std::string_view what);

/// Refuses anything but an object.
void require_object(const Json& json, std::string_view what);

}  // namespace quoll::console
