#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/text.h"

/// The query of a URL held as text, and the parameter dictionary that it stands for: text keys to a
/// text or to a list of texts. Pure functions; any thread may call.
namespace quoll::RequestUtils {

/// How repeated keys and lists are treated: one value mode in the low three bits, and a flag. With
/// no mode, composing collects values and parsing keeps the last value.
using URLQueryOptions = std::uint32_t;
inline constexpr URLQueryOptions URLQueryKeepLastValue = 1;
inline constexpr URLQueryOptions URLQueryKeepFirstValue = 2;
inline constexpr URLQueryOptions URLQueryCollectValues = 3;
/// A key has a list, also of one; composing takes a text for a list of one.
inline constexpr URLQueryOptions URLQueryAlwaysArrays = 4;
/// When composing, elements of lists are written `key[]=value`.
inline constexpr URLQueryOptions URLQueryBracketArrayKeys = 8;

/// The value mode of an options word, `when_none` when it has none.
[[nodiscard]] constexpr URLQueryOptions mode_of(URLQueryOptions options,
                                                URLQueryOptions when_none) {
  constexpr URLQueryOptions kModeMask = 7;
  const URLQueryOptions mode = options & kModeMask;
  return mode == 0 ? when_none : mode;
}

/// `URLEncodedString`: percent-encoded for use as a query key or value. A space becomes `%20`.
[[nodiscard]] std::string URLEncodedString(std::string_view text);

/// `URLDecodedString:`: percent-escapes decoded, after every "+" has become a space when
/// `plus_as_space` is set. None when an escape is malformed or the bytes are not UTF-8.
[[nodiscard]] std::optional<std::string> URLDecodedString(std::string_view text,
                                                          bool plus_as_space);

/// `rangeOfURLQuery`: from the first "?" (included) up to the first "#" or the end; without a "?",
/// all before the "#" when it holds a "=". None when there is no query. The length is negative when
/// the only "?" lies after the "#".
[[nodiscard]] std::optional<foundation::Range> rangeOfURLQuery(std::string_view text);

/// `URLQuery`: the query without its leading "?", none when there is none. Raises
/// `NSRangeException` when the range has a negative length.
[[nodiscard]] std::optional<std::string> URLQuery(std::string_view text);

/// `URLQueryWithParameters:` and `URLQueryWithParameters:options:`: the query string, without a
/// leading "?", in the dictionary's order. Raises `NSInvalidArgumentException` when a value, or an
/// element of a list, is not a text.
[[nodiscard]] std::string URLQueryWithParameters(const foundation::Dictionary& parameters);
[[nodiscard]] std::string URLQueryWithParameters(const foundation::Dictionary& parameters,
                                                 URLQueryOptions options);

/// `URLQueryParameters` and `URLQueryParametersWithOptions:`: a new dictionary of the parameters in
/// the order of their first appearance; empty when there is no query. Pieces without "=" are left
/// out. Raises `NSInvalidArgumentException` when a key or a value does not decode.
[[nodiscard]] std::shared_ptr<foundation::Dictionary> URLQueryParameters(std::string_view text);
[[nodiscard]] std::shared_ptr<foundation::Dictionary> URLQueryParametersWithOptions(
    std::string_view text, URLQueryOptions options);

}  // namespace quoll::RequestUtils
