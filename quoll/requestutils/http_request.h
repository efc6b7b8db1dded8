#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/url_request.h"
#include "quoll/requestutils/url_query.h"

/// HTTP requests: parameters in the URL's query or in a form body, and basic authentication.
/// Setting a header adds a value: a header that is set twice has both values in its field.
///
/// An operation changes only the request that it is given. When it raises, it has changed nothing.
/// It raises
/// - `NSInvalidArgumentException` when a parameter to write is neither a text nor a list of texts,
///   or when a parameter that is read does not decode;
/// - `NSRangeException` when the URL's text or the body is searched for a query, and its only "?"
///   stands behind a "#".
///
/// The `add` operations merge as `stringByMergingURLQuery` does, and raise as it does.
namespace quoll::RequestUtils {

/// `HTTPRequestWithURL:method:parameters:`: a new request; never null. The method is written in
/// upper case. The parameters of a GET request go into the URL, those of any other into the body.
/// The URL may be null.
[[nodiscard]] std::shared_ptr<foundation::NSMutableURLRequest> HTTPRequestWithURL(
    std::shared_ptr<foundation::NSURL> url, std::string_view method,
    const foundation::Dictionary& parameters);
/// `GETRequestWithURL:parameters:` and `POSTRequestWithURL:parameters:`: the same with that method.
[[nodiscard]] std::shared_ptr<foundation::NSMutableURLRequest> GETRequestWithURL(
    std::shared_ptr<foundation::NSURL> url, const foundation::Dictionary& parameters);
[[nodiscard]] std::shared_ptr<foundation::NSMutableURLRequest> POSTRequestWithURL(
    std::shared_ptr<foundation::NSURL> url, const foundation::Dictionary& parameters);

/// `GETParameters`: the parameters in the URL's query; null when the URL has no query.
[[nodiscard]] foundation::Dictionary GETParameters(const foundation::NSURLRequest& request);
/// `POSTParameters`: the parameters in the body; empty when there is no body or when it is not
/// UTF-8.
[[nodiscard]] foundation::Dictionary POSTParameters(const foundation::NSURLRequest& request);

/// `setGETParameters:` and `setGETParameters:options:`: replaces the query of the URL. The URL is
/// taken apart and put together again for this; it becomes null when that gives no URL (see
/// `URLWithValue`).
void setGETParameters(foundation::NSMutableURLRequest& request,
                      const foundation::Dictionary& parameters);
void setGETParameters(foundation::NSMutableURLRequest& request,
                      const foundation::Dictionary& parameters, URLQueryOptions options);
/// `addGETParameters:options:`: merges the parameters into the query of the URL, which may become
/// null as above. A URL that had no query gets a second "?": `http://h/p??a=1`.
void addGETParameters(foundation::NSMutableURLRequest& request,
                      const foundation::Dictionary& parameters, URLQueryOptions options);

/// `setPOSTParameters:` and `setPOSTParameters:options:`: replaces the body by the parameters.
void setPOSTParameters(foundation::NSMutableURLRequest& request,
                       const foundation::Dictionary& parameters);
void setPOSTParameters(foundation::NSMutableURLRequest& request,
                       const foundation::Dictionary& parameters, URLQueryOptions options);
/// `addPOSTParameters:options:`: merges the parameters into the body. If there was no body, or one
/// that is not UTF-8, the new one begins with "?".
void addPOSTParameters(foundation::NSMutableURLRequest& request,
                       const foundation::Dictionary& parameters, URLQueryOptions options);

/// `setHTTPBasicAuthUser:password:`: adds the "Authorization" header. Null counts as empty.
void setHTTPBasicAuthUser(foundation::NSMutableURLRequest& request,
                          std::optional<std::string_view> user,
                          std::optional<std::string_view> password);

/// `HTTPBasicAuthComponents`: the "Authorization" header, decoded and split at every ":"; none when
/// it does not decode. Without that header: the user and the password of the URL, each empty when
/// the URL has none.
[[nodiscard]] std::optional<std::vector<std::string>> HTTPBasicAuthComponents(
    const foundation::NSURLRequest& request);
/// `HTTPBasicAuthUser`: the first of these components.
[[nodiscard]] std::optional<std::string> HTTPBasicAuthUser(const foundation::NSURLRequest& request);
/// `HTTPBasicAuthPassword`: the second of these components, if there are exactly two.
[[nodiscard]] std::optional<std::string> HTTPBasicAuthPassword(
    const foundation::NSURLRequest& request);

}  // namespace quoll::RequestUtils
