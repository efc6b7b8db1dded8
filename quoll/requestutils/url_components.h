#pragma once

#include <memory>
#include <string_view>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/value.h"

/// Takes a URL apart into a dictionary of named components, and builds one from such a dictionary.
/// Pure functions; any thread may call.
namespace quoll::RequestUtils {

// The keys of the dictionary. They are symbols of the library and have their values before any code
// runs. Their values are texts, with two exceptions: `components` answers a port as a number, and
// `URLWithComponents` also takes a parameter dictionary as the query.
extern const std::string_view URLSchemeComponent;           ///< "scheme"
extern const std::string_view URLHostComponent;             ///< "host"
extern const std::string_view URLPortComponent;             ///< "port"
extern const std::string_view URLUserComponent;             ///< "user"
extern const std::string_view URLPasswordComponent;         ///< "password"
extern const std::string_view URLPathComponent;             ///< "path"
extern const std::string_view URLParameterStringComponent;  ///< "parameterString"
extern const std::string_view URLQueryComponent;            ///< "query"
extern const std::string_view URLFragmentComponent;         ///< "fragment"

/// `URLWithComponents:`: builds a URL. Nothing is percent-encoded except a query that is a
/// dictionary. Null when the result is not a URL. A password without a user is ignored, and so are
/// unknown keys. Raises `NSInvalidArgumentException` when scheme, user, host or path is not a text,
/// or when the query holds something that cannot be written.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithComponents(
    const foundation::Dictionary& components);

/// `components`: a new dictionary of the components that the URL has, with the values of its
/// accessors (so percent-escapes are decoded where the accessor decodes).
[[nodiscard]] foundation::Dictionary components(const foundation::NSURL& url);

/// `URLWithValue:forComponent:`: the URL with one component replaced; a null value removes it. The
/// result may be null for a URL with escapes in its user, host or path, because taking it apart
/// decodes them and building does not encode. An unknown component is ignored. Raises as
/// `URLWithComponents` does.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithValue(const foundation::NSURL& url,
                                                              const foundation::Value& value,
                                                              std::string_view forComponent);

/// `URLWithScheme:`: replaces the scheme and leaves the rest of the text as it is. A URL without a
/// scheme gets the new one in front of its text. Null when the result is not a URL.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithScheme(const foundation::NSURL& url,
                                                               std::string_view scheme);

/// `URLWithHost:`, `URLWithPort:` and so on: `URLWithValue:forComponent:` with that component.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithHost(const foundation::NSURL& url,
                                                             const foundation::Value& host);
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithPort(const foundation::NSURL& url,
                                                             const foundation::Value& port);
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithUser(const foundation::NSURL& url,
                                                             const foundation::Value& user);
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithPassword(const foundation::NSURL& url,
                                                                 const foundation::Value& password);
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithParameterString(
    const foundation::NSURL& url, const foundation::Value& parameters);
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithQuery(const foundation::NSURL& url,
                                                              const foundation::Value& query);
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithFragment(const foundation::NSURL& url,
                                                                 const foundation::Value& fragment);

/// `URLWithPath:`: despite its name, this replaces the *password* and leaves the path as it was.
/// Callers rely on it.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithPath(const foundation::NSURL& url,
                                                             const foundation::Value& password);

}  // namespace quoll::RequestUtils
