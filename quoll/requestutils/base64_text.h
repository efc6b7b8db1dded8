#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Base64 of texts. Pure functions; any thread may call.
namespace quoll::RequestUtils {

/// `base64EncodedString`: the text's bytes in Base64; none when the text is empty.
[[nodiscard]] std::optional<std::string> base64EncodedString(std::string_view text);

/// `base64DecodedString`: the text that was encoded. Every character that is not a Base64 digit is
/// skipped, also padding, wherever it stands. None when no byte results, or when the bytes are not
/// UTF-8.
[[nodiscard]] std::optional<std::string> base64DecodedString(std::string_view text);

}  // namespace quoll::RequestUtils
