#pragma once

#include <memory>

#include "apps/console/operations/json.h"
#include "quoll/foundation/url_request.h"

/// The content of `{"$request": {"url": .., "method": .., "headers": {..}, "body": ..}}`.
namespace quoll::console {

/// Every key may be left out or null.
[[nodiscard]] std::shared_ptr<foundation::NSMutableURLRequest> read_request(const Json& json);

[[nodiscard]] Json write_request(const foundation::NSURLRequest& request);

}  // namespace quoll::console
