#pragma once

#include <memory>

#include "apps/console/operations/json.h"
#include "quoll/foundation/url_request.h"

/// Reads and writes the content of `{"$request": {"url": .., "method": .., "headers": {..}, "body":
/// ..}}`.
namespace quoll::console {

/// Reads a request. Each key may be missing or null.
[[nodiscard]] std::shared_ptr<foundation::NSMutableURLRequest> read_request(const Json& json);

[[nodiscard]] Json write_request(const foundation::NSURLRequest& request);

}  // namespace quoll::console
