#include <memory>

#include "apps/console/operations/arguments.h"
#include "apps/console/operations/operation.h"
#include "quoll/foundation/collections.h"
#include "quoll/message/extension_message.h"

namespace quoll::console {

namespace {

using foundation::Value;
constexpr auto kInstance = Operation::Level::kInstance;

Value search_urls(const Call& call) {
  foundation::List links;
  for (std::string& link :
       call.self.as<ExtensionMessage>()->searchUrlsDetector(text_argument(call.arguments[0]))) {
    links.addObject(std::move(link));
  }
  return links;
}

}  // namespace

std::vector<Operation> rendering_operations() {
  return {
      {"renderHtml", "ExtensionMessage", kInstance, 0,
       [](Call& call) -> Value { return call.self.as<ExtensionMessage>()->renderHtml(); },
       /*changes_receiver=*/true},
      {"searchUrlsDetector:", "ExtensionMessage", kInstance, 1,
       [](Call& call) -> Value { return search_urls(call); }},
  };
}

}  // namespace quoll::console
