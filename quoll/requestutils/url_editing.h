#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/nsurl.h"
#include "quoll/requestutils/url_query.h"

/// Editing a URL that is held as text. Only the text is looked at, so partial URLs, bare paths and
/// bare queries will do. Pure functions; any thread may call.
///
/// The fragment is what follows the first "#"; the query is what `rangeOfURLQuery` finds, so a "?"
/// only behind the "#" raises `NSRangeException` wherever the whole text is searched for a query;
/// the last path component is what follows the last "/".
namespace quoll::RequestUtils {

/// `URLFragment`: none when there is no "#".
[[nodiscard]] std::optional<std::string> URLFragment(std::string_view text);

/// `stringByDeletingURLFragment`: without the "#" and what follows it.
[[nodiscard]] std::string stringByDeletingURLFragment(std::string_view text);

/// `stringByAppendingURLFragment:`: extends the fragment that is there; an empty one adds a lone
/// "#" where there is none. A null fragment changes nothing.
[[nodiscard]] std::string stringByAppendingURLFragment(std::string_view text,
                                                       std::optional<std::string_view> fragment);

/// `stringByDeletingURLQuery`: without the query and its "?".
[[nodiscard]] std::string stringByDeletingURLQuery(std::string_view text);

/// `stringByAppendingURLQuery:`: joined to the query that is there by "&". A null or empty query
/// changes nothing; otherwise an empty fragment is dropped.
[[nodiscard]] std::string stringByAppendingURLQuery(std::string_view text,
                                                    std::optional<std::string_view> query);

/// `stringByReplacingURLQueryWithQuery:`.
[[nodiscard]] std::string stringByReplacingURLQueryWithQuery(std::string_view text,
                                                             std::optional<std::string_view> query);

/// `stringByMergingURLQuery:` and `stringByMergingURLQuery:options:`: the parameters of `query`, a
/// bare query or a URL, merged into those of `text`, which keep their places; `http://h/p?a=1` and
/// `b=2` give `http://h/pa=1&b=2`: the merged query has no "?". Without a query on either side the
/// other one stands as it is. Raises `NSInvalidArgumentException` when a parameter does not decode,
/// and when every value is to be a list and `query` has a new key.
[[nodiscard]] std::string stringByMergingURLQuery(std::string_view text,
                                                  std::optional<std::string_view> query);
[[nodiscard]] std::string stringByMergingURLQuery(std::string_view text,
                                                  std::optional<std::string_view> query,
                                                  URLQueryOptions options);

/// `lastURLPathComponent`: the whole path when it has no "/".
[[nodiscard]] std::string lastURLPathComponent(std::string_view text);

/// `stringByDeletingLastURLPathComponent`: the "/" before it stays, and so does a path without one.
[[nodiscard]] std::string stringByDeletingLastURLPathComponent(std::string_view text);

/// `stringByAppendingURLPathComponent:`: joined by one "/", before the query and the fragment.
[[nodiscard]] std::string stringByAppendingURLPathComponent(std::string_view text,
                                                            std::string_view component);

/// `URLPathExtension`: of the last path component; empty when it has none.
[[nodiscard]] std::string URLPathExtension(std::string_view text);

/// `stringByDeletingURLPathExtension`. A path without any "/" is repeated: `a.b` gives `a.b/a`.
[[nodiscard]] std::string stringByDeletingURLPathExtension(std::string_view text);

/// `stringByAppendingURLPathExtension:`. A path without any "/" is repeated: `file` and `txt` give
/// `file/file.txt`.
[[nodiscard]] std::string stringByAppendingURLPathExtension(std::string_view text,
                                                            std::string_view extension);

/// `URLValueRelativeToURL:`: as `URLWithString:relativeToURL:` makes it.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLValueRelativeToURL(
    std::string_view text, std::shared_ptr<foundation::NSURL> base);

}  // namespace quoll::RequestUtils
