#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/text.h"

/// The query of a URL, and the parameter dictionary that it stands for. The dictionary's keys are
/// texts; each value is a text or a list of texts. Pure functions; any thread may call.
namespace quoll::RequestUtils {

/// How repeated keys and lists are treated: one value mode in the low three bits, and one flag.
/// Without a mode, composing works as with `URLQueryCollectValues` and parsing as with
/// `URLQueryKeepLastValue`. Every number may be cast to it; modes 5 to 7 have no names.
enum URLQueryOptions : std::uint32_t {
  URLQueryKeepLastValue = 1,
  URLQueryKeepFirstValue = 2,
  URLQueryCollectValues = 3,
  /// When parsing, every key gets a list, even for one value. When composing, a text is treated as
  /// a list of one.
  URLQueryAlwaysArrays = 4,
  /// A flag for composing: elements of lists are written `key[]=value`.
  URLQueryBracketArrayKeys = 8,
};

[[nodiscard]] constexpr URLQueryOptions operator|(URLQueryOptions a, URLQueryOptions b) {
  return static_cast<URLQueryOptions>(std::uint32_t{a} | std::uint32_t{b});
}

/// The value mode in `options`, or `when_none` when there is none.
[[nodiscard]] constexpr URLQueryOptions mode_of(URLQueryOptions options,
                                                URLQueryOptions when_none) {
  constexpr std::uint32_t kModeMask = 7;
  const std::uint32_t mode = options & kModeMask;
  return mode == 0 ? when_none : static_cast<URLQueryOptions>(mode);
}

/// `URLEncodedString`: the text, percent-encoded for use as a query's key or value. A space becomes
/// `%20`.
[[nodiscard]] std::string URLEncodedString(std::string_view text);

/// `URLDecodedString:`: the text with its percent-escapes decoded. If `plus_as_space` is set, every
/// "+" becomes a space first. None when an escape is malformed, or when the bytes are not UTF-8.
[[nodiscard]] std::optional<std::string> URLDecodedString(std::string_view text,
                                                          bool plus_as_space);

/// `rangeOfURLQuery`: where the query stands, in bytes. It runs from the first "?" (included) to
/// the first "#" or the end of the text. A text without a "?" is a query as a whole, up to the "#",
/// if that part has a "=". None when there is no query. The length is negative when the only "?"
/// stands behind the "#".
[[nodiscard]] std::optional<foundation::Range> rangeOfURLQuery(std::string_view text);

/// `URLQuery`: the query without its leading "?"; none when there is no query. Raises
/// `NSRangeException` when the range has a negative length.
[[nodiscard]] std::optional<std::string> URLQuery(std::string_view text);

/// `URLQueryWithParameters:` and `URLQueryWithParameters:options:`: the query string of the
/// parameters, in the dictionary's order, without a leading "?". Raises
/// `NSInvalidArgumentException` when a value, or an element of a list, is not a text.
[[nodiscard]] std::string URLQueryWithParameters(const foundation::Dictionary& parameters);
[[nodiscard]] std::string URLQueryWithParameters(const foundation::Dictionary& parameters,
                                                 URLQueryOptions options);

/// `URLQueryParameters` and `URLQueryParametersWithOptions:`: a new dictionary of the parameters,
/// in the order in which their keys first appear; empty when there is no query. Pieces without a
/// "=" are left out. Raises `NSInvalidArgumentException` when a key or a value does not decode.
[[nodiscard]] foundation::Dictionary URLQueryParameters(std::string_view text);
[[nodiscard]] foundation::Dictionary URLQueryParametersWithOptions(std::string_view text,
                                                                   URLQueryOptions options);

}  // namespace quoll::RequestUtils
