#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The one percent codec of the system. Escapes stand for bytes and are written with upper-case
/// digits.
namespace quoll::foundation {

/// What an unescaped "+" stands for while decoding.
enum class PlusSign { kItself, kSpace };

/// Appends `text` with every byte outside A-Z a-z 0-9 - . _ ~ escaped.
void percent_encode_append(std::string& out, std::string_view text);
[[nodiscard]] std::string percent_encode(std::string_view text);

/// The same for the path of a URL: "/" and the characters that mean nothing special inside a path
/// (! $ & ' ( ) * + , : = @) stay as well.
[[nodiscard]] std::string percent_encode_path(std::string_view path);

/// Appends one byte as "%XX".
void percent_escape_append(std::string& out, char byte);

/// The bytes that an encoded text stands for; none when a "%" is not followed by two hexadecimal
/// digits (either case). `%00` gives a zero byte.
[[nodiscard]] std::optional<std::string> percent_decode_bytes(std::string_view text,
                                                              PlusSign plus = PlusSign::kItself);

/// The same; none as well when the bytes are not UTF-8.
[[nodiscard]] std::optional<std::string> percent_decode(std::string_view text,
                                                        PlusSign plus = PlusSign::kItself);

}  // namespace quoll::foundation
