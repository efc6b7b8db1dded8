#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/url_request.h"
#include "quoll/requestutils/url_query.h"

/// HTTP requests with parameters in the query of their URL or in a form body, and basic
/// authentication. Header values are always added: what is set twice stands twice in its field.
///
/// An operation changes nothing but the request that it is given, and not that one when it raises:
/// `NSInvalidArgumentException` where a parameter to compose is neither a text nor a list of texts,
/// or one to parse does not decode; `NSRangeException` where the URL's text or the body is searched
/// for a query and has a "?" only behind a "#". What is added is merged as
/// `stringByMergingURLQuery` does it, and raises as that does.
namespace quoll::RequestUtils {

/// `HTTPRequestWithURL:method:parameters:`: the method is upper-cased; the parameters of a GET
/// request go into the URL, those of every other into the body. The URL may be null.
[[nodiscard]] std::shared_ptr<foundation::NSMutableURLRequest> HTTPRequestWithURL(
    std::shared_ptr<foundation::NSURL> url, std::string_view method,
    const foundation::Dictionary& parameters);
/// `GETRequestWithURL:parameters:` and `POSTRequestWithURL:parameters:`.
[[nodiscard]] std::shared_ptr<foundation::NSMutableURLRequest> GETRequestWithURL(
    std::shared_ptr<foundation::NSURL> url, const foundation::Dictionary& parameters);
[[nodiscard]] std::shared_ptr<foundation::NSMutableURLRequest> POSTRequestWithURL(
    std::shared_ptr<foundation::NSURL> url, const foundation::Dictionary& parameters);

/// `GETParameters`: of the URL's query; null when the URL has none.
[[nodiscard]] std::shared_ptr<foundation::Dictionary> GETParameters(
    const foundation::NSURLRequest& request);
/// `POSTParameters`: of the body as UTF-8; empty when it is none.
[[nodiscard]] std::shared_ptr<foundation::Dictionary> POSTParameters(
    const foundation::NSURLRequest& request);

/// `setGETParameters:` and `setGETParameters:options:`: replaces the query of the URL, which
/// becomes null when it does not come together again (see `URLWithValue`).
void setGETParameters(foundation::NSMutableURLRequest& request,
                      const foundation::Dictionary& parameters);
void setGETParameters(foundation::NSMutableURLRequest& request,
                      const foundation::Dictionary& parameters, URLQueryOptions options);
/// `addGETParameters:options:`: merges into the query of the URL, which becomes null as above. A
/// URL without a query gets a second "?": `http://h/p??a=1`.
void addGETParameters(foundation::NSMutableURLRequest& request,
                      const foundation::Dictionary& parameters, URLQueryOptions options);

/// `setPOSTParameters:` and `setPOSTParameters:options:`: the parameters become the body.
void setPOSTParameters(foundation::NSMutableURLRequest& request,
                       const foundation::Dictionary& parameters);
void setPOSTParameters(foundation::NSMutableURLRequest& request,
                       const foundation::Dictionary& parameters, URLQueryOptions options);
/// `addPOSTParameters:options:`: merges into the body. Where there is none, or one that is not
/// UTF-8, the new one begins with "?".
void addPOSTParameters(foundation::NSMutableURLRequest& request,
                       const foundation::Dictionary& parameters, URLQueryOptions options);

/// `setHTTPBasicAuthUser:password:`: null counts as empty.
void setHTTPBasicAuthUser(foundation::NSMutableURLRequest& request,
                          std::optional<std::string_view> user,
                          std::optional<std::string_view> password);

/// `HTTPBasicAuthComponents`: what the "Authorization" field says, split at every ":", none when it
/// does not decode; without that field, user and password of the URL, empty where it has none.
[[nodiscard]] std::optional<std::vector<std::string>> HTTPBasicAuthComponents(
    const foundation::NSURLRequest& request);
/// `HTTPBasicAuthUser`: the first component.
[[nodiscard]] std::optional<std::string> HTTPBasicAuthUser(const foundation::NSURLRequest& request);
/// `HTTPBasicAuthPassword`: the second component when there are exactly two.
[[nodiscard]] std::optional<std::string> HTTPBasicAuthPassword(
    const foundation::NSURLRequest& request);

}  // namespace quoll::RequestUtils
