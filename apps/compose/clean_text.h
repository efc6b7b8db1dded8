#pragma once

#include <string>
#include <string_view>

/// Texts that were written by a stranger and go to a header, a command line or a window. A control
/// character is one of Unicode's (U+0000 to U+001F, U+007F to U+009F), or a separator of lines or
/// paragraphs (U+2028, U+2029). All functions take UTF-8 and are linear in its length.
namespace quoll::compose {

/// True when the text has no control character but those in `allowed`, which is ASCII.
[[nodiscard]] bool is_clean(std::string_view text, std::string_view allowed = "");

/// The text on one line: each control character becomes a blank, and blanks around it go.
[[nodiscard]] std::string one_line(std::string_view text);

/// The text with line feeds for the line breaks of mail and for lone carriage returns.
[[nodiscard]] std::string with_line_feeds(std::string_view text);

/// The lines of a text, with line feeds whatever ends them. Tabs stay; other control characters
/// become their pictures (U+2400 for U+0000), or U+FFFD when they have none.
[[nodiscard]] std::string clean_lines(std::string_view text);

/// A file's name with its ASCII control characters replaced by their pictures.
[[nodiscard]] std::string with_control_pictures(std::string_view name);

/// Whether a character in the text is invisible or turns the direction of others (U+00AD, U+061C,
/// U+200B to U+200F, U+202A to U+202E, U+2060 to U+206F, U+FEFF); the text without them.
[[nodiscard]] bool has_invisible(std::string_view text);
[[nodiscard]] std::string without_invisible(std::string_view text);

/// The text without what reads as an encoded word of a mail header (`=?utf-8?Q?...?=`): a program
/// that is given it must not decode it to something that nobody looked at.
[[nodiscard]] std::string without_encoded_words(std::string_view text);

}  // namespace quoll::compose
