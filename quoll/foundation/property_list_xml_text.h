#pragma once

#include <string>
#include <string_view>

#include "quoll/foundation/value.h"

/// What stands between the tags of a property list in XML.
namespace quoll::foundation::property_list {

/// Appends a piece of text, its entities replaced; false when one of them is unknown.
[[gnu::visibility("hidden")]] bool append_unescaped(std::string& out, std::string_view piece);

// The value of an element with this content; null when the content does not fit the element. White
// space around the content is ignored.
[[nodiscard, gnu::visibility("hidden")]] Value integer_of_xml(std::string_view text);
[[nodiscard, gnu::visibility("hidden")]] Value real_of_xml(std::string_view text);
[[nodiscard, gnu::visibility("hidden")]] Value date_of_xml(std::string_view text);
/// Base64, in which white space may stand anywhere.
[[nodiscard, gnu::visibility("hidden")]] Value bytes_of_xml(std::string_view base64);

}  // namespace quoll::foundation::property_list
