#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/value.h"

/// The one Base64 codec of the system: the standard alphabet of RFC 4648 with "=" as padding. There
/// are three ways to read it, since texts from different places deserve different trust.
namespace quoll::foundation {

/// With padding, without line breaks. No bytes give the empty text.
[[nodiscard]] std::string base64_encode(std::string_view bytes);
[[nodiscard]] std::string base64_encode(const Bytes& bytes);

/// None when the text is anything but what `base64_encode` writes.
[[nodiscard]] std::optional<Bytes> base64_decode(std::string_view text);

/// Characters that are neither digits nor padding are skipped. None when padding is missing or
/// misplaced or when a digit follows it. Nothing but skipped characters gives no bytes.
[[nodiscard]] std::optional<Bytes> base64_decode_ignoring_unknown(std::string_view text);

/// Every character that is no digit is skipped, "=" too, wherever it stands: what follows padding
/// is decoded as well. Of the last group, two digits give one byte, three give two, one gives none.
[[nodiscard]] std::string base64_decode_digits(std::string_view text);

}  // namespace quoll::foundation
