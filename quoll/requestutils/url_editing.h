#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/nsurl.h"
#include "quoll/requestutils/url_query.h"

/// Edits a URL that is held as text. Nothing but the text is looked at, so parts of URLs, bare
/// paths and bare queries can be edited too. Pure functions; any thread may call.
///
/// - The fragment is what follows the first "#".
/// - The query is what `rangeOfURLQuery` finds. So a text whose only "?" stands behind the "#"
///   raises `NSRangeException` in every operation that searches all of it for a query.
/// - The last path component is what follows the last "/" of the path.
namespace quoll::RequestUtils {

/// `URLFragment`: the fragment without its "#"; none when there is no "#".
[[nodiscard]] std::optional<std::string> URLFragment(std::string_view text);

/// `stringByDeletingURLFragment`: the text without the "#" and what follows it.
[[nodiscard]] std::string stringByDeletingURLFragment(std::string_view text);

/// `stringByAppendingURLFragment:`: the text with the fragment appended. If it has a fragment
/// already, that one is extended; if not, a "#" is added first, also for an empty fragment. A null
/// fragment changes nothing.
[[nodiscard]] std::string stringByAppendingURLFragment(std::string_view text,
                                                       std::optional<std::string_view> fragment);

/// `stringByDeletingURLQuery`: the text without the query and its "?".
[[nodiscard]] std::string stringByDeletingURLQuery(std::string_view text);

/// `stringByAppendingURLQuery:`: the text with the query appended, by "&" if it has a query
/// already, else by "?". A null or empty query changes nothing; any other drops an empty fragment.
[[nodiscard]] std::string stringByAppendingURLQuery(std::string_view text,
                                                    std::optional<std::string_view> query);

/// `stringByReplacingURLQueryWithQuery:`: the text without its query, and then with this one
/// appended.
[[nodiscard]] std::string stringByReplacingURLQueryWithQuery(std::string_view text,
                                                             std::optional<std::string_view> query);

/// `stringByMergingURLQuery:` and `stringByMergingURLQuery:options:`: merges the parameters of
/// `query` (a bare query or a URL) into those of `text`, which keep their order. A merged query has
/// no "?": `http://h/p?a=1` and `b=2` give `http://h/pa=1&b=2`. If one side has no query, that of
/// the other is used unchanged. Raises `NSInvalidArgumentException` when a parameter does not
/// decode, and also when the mode is `URLQueryAlwaysArrays` and `query` has a key that `text` does
/// not have.
[[nodiscard]] std::string stringByMergingURLQuery(std::string_view text,
                                                  std::optional<std::string_view> query);
[[nodiscard]] std::string stringByMergingURLQuery(std::string_view text,
                                                  std::optional<std::string_view> query,
                                                  URLQueryOptions options);

/// `lastURLPathComponent`: the last path component; the whole path when it has no "/".
[[nodiscard]] std::string lastURLPathComponent(std::string_view text);

/// `stringByDeletingLastURLPathComponent`: the text without that component; the "/" before it
/// stays. A path without a "/" is not changed.
[[nodiscard]] std::string stringByDeletingLastURLPathComponent(std::string_view text);

/// `stringByAppendingURLPathComponent:`: the text with a component at the end of its path, before
/// the query and the fragment. Path and component are joined by one "/".
[[nodiscard]] std::string stringByAppendingURLPathComponent(std::string_view text,
                                                            std::string_view component);

/// `URLPathExtension`: the extension of the last path component, without its "."; empty when it has
/// none.
[[nodiscard]] std::string URLPathExtension(std::string_view text);

/// `stringByDeletingURLPathExtension`: the text without that extension. A path without any "/" is
/// repeated: `a.b` gives `a.b/a`.
[[nodiscard]] std::string stringByDeletingURLPathExtension(std::string_view text);

/// `stringByAppendingURLPathExtension:`: the text with an extension at the end of its path. A path
/// without any "/" is repeated: `file` and `txt` give `file/file.txt`.
[[nodiscard]] std::string stringByAppendingURLPathExtension(std::string_view text,
                                                            std::string_view extension);

/// `URLValueRelativeToURL:`: the text as a URL, made as `URLWithString:relativeToURL:` makes it;
/// null when it is not one.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLValueRelativeToURL(
    std::string_view text, std::shared_ptr<foundation::NSURL> base);

}  // namespace quoll::RequestUtils
