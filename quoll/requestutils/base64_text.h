#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Base64 of texts. Pure functions; any thread may call.
namespace quoll::RequestUtils {

/// `base64EncodedString`: of the text's bytes; none when the text is empty.
[[nodiscard]] std::optional<std::string> base64EncodedString(std::string_view text);

/// `base64DecodedString`: the text whose bytes are encoded. Whatever is no digit is skipped,
/// padding too, wherever it stands. None when no byte results or when the bytes are not UTF-8.
[[nodiscard]] std::optional<std::string> base64DecodedString(std::string_view text);

}  // namespace quoll::RequestUtils
