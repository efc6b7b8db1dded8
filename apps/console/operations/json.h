#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace quoll::console {

/// A JSON value. Objects keep the order of their keys. That is the order in which a dictionary
/// enumerates, and so the order in a composed query.
using Json = nlohmann::ordered_json;

/// Thrown when a request cannot be used; `what()` says why in one line.
class Refused final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads one JSON text. Integers that do not fit in 64 bits become reals. A key that occurs twice
/// is kept twice. Throws `Refused` for text that is not UTF-8, is not JSON, or is nested too deeply
/// for a request.
[[nodiscard]] Json parse_json(std::string_view text);

/// One line of JSON. Numbers that JSON does not have (NaN, the infinities) are written as null.
[[nodiscard]] std::string json_line(const Json& json);

/// Appends an entry whose key is not in `object` yet. The library's own insertion compares the key
/// with all before it, which takes quadratic time for a large dictionary.
inline void append(Json& object, std::string key, Json value) {
  object.get_ref<Json::object_t&>().Json::object_t::Container::emplace_back(std::move(key),
                                                                            std::move(value));
}

/// The text in `json`. Throws `Refused` for another kind of value; `what` names the value in the
/// reason.
[[nodiscard]] const std::string& text_in(const Json& json, std::string_view what);

/// Throws `Refused` for anything but an object.
void require_object(const Json& json, std::string_view what);

}  // namespace quoll::console
