#pragma once

#include <memory>
#include <string_view>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/value.h"

/// A URL as a dictionary of named components, and back. Pure functions; any thread may call.
namespace quoll::RequestUtils {

// The keys, symbols of the library that stand before any code runs. Values are texts; but a port is
// a number where a URL is taken apart, and a query may be a parameter dictionary where one is
// built.
extern const std::string_view URLSchemeComponent;           ///< "scheme"
extern const std::string_view URLHostComponent;             ///< "host"
extern const std::string_view URLPortComponent;             ///< "port"
extern const std::string_view URLUserComponent;             ///< "user"
extern const std::string_view URLPasswordComponent;         ///< "password"
extern const std::string_view URLPathComponent;             ///< "path"
extern const std::string_view URLParameterStringComponent;  ///< "parameterString"
extern const std::string_view URLQueryComponent;            ///< "query"
extern const std::string_view URLFragmentComponent;         ///< "fragment"

/// `URLWithComponents:`: nothing is percent-encoded but a query that is a dictionary. Null when
/// what is put together is no URL. A password without a user is ignored, and so are unknown keys.
/// Raises `NSInvalidArgumentException` when scheme, user, host or path is no text, or when the
/// query does not compose.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithComponents(
    const foundation::Dictionary& components);

/// `components`: a new dictionary of what the URL has, as its accessors tell it.
[[nodiscard]] std::shared_ptr<foundation::Dictionary> components(const foundation::NSURL& url);

/// `URLWithValue:forComponent:`: a null value removes the component. Since accessors decode and
/// building does not encode, a URL with escapes in its user, host or path may give null. An unknown
/// component is ignored. Raises as `URLWithComponents` does.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithValue(const foundation::NSURL& url,
                                                              const foundation::Value& value,
                                                              std::string_view forComponent);

/// `URLWithScheme:`: the scheme alone is replaced; without one, the new one stands right before the
/// text. Null when that is no URL.
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

/// `URLWithPath:`: replaces the *password*; the path stays as it was. Callers rely on it.
[[nodiscard]] std::shared_ptr<foundation::NSURL> URLWithPath(const foundation::NSURL& url,
                                                             const foundation::Value& password);

}  // namespace quoll::RequestUtils
