#pragma once

#include <string>
#include <string_view>

/// Header fields of a message (RFC 5322), with texts in other letters as encoded words (RFC 2047).
namespace quoll::compose {

/// The value of a header that is a text on one line, such as the subject.
[[nodiscard]] std::string header_text(std::string_view text);

/// True for a name that may stand before an address without quotes.
[[nodiscard]] bool is_bare(std::string_view name);
/// A name as it stands before an address: bare, in quotes, or encoded.
[[nodiscard]] std::string header_phrase(std::string_view name);
/// The same for people and programs that read UTF-8: bare or in quotes.
[[nodiscard]] std::string plain_phrase(std::string_view name);

/// Appends a whole header to `out`, folded at blanks. No line becomes longer than 998 bytes if no
/// word is.
void append_header(std::string& out, std::string_view name, std::string_view value);

}  // namespace quoll::compose
