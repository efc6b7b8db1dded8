#include <memory>

#include "apps/console/operations/arguments.h"
#include "apps/console/operations/operation.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/message/command_launcher.h"
#include "quoll/message/extension_message.h"

namespace quoll::console {

namespace {

using foundation::NSURL;
using foundation::Value;
constexpr auto kInstance = Operation::Level::kInstance;
constexpr auto kClass = Operation::Level::kClass;

/// The elements of a list, which must all be of one class.
template <typename T>
std::vector<std::shared_ptr<T>> objects(const Value& value, std::string_view wanted) {
  std::vector<std::shared_ptr<T>> found;
  for (const Value& element : list_argument(value)) {
    found.push_back(object_argument<T>(element, wanted));
  }
  return found;
}

bool is_equal_to_model(const Call& call) {
  const auto other = object_argument<ExtensionMessage>(call.arguments[0], "an ExtensionMessage");
  // A null model equals no message.
  return other && call.self.as<ExtensionMessage>()->isEqualToModel(*other);
}

}  // namespace

std::vector<Operation> message_operations() {
  return {
      {"ExtensionMessageWithUrl:", "ExtensionMessage", kClass, 1,
       [](Call& call) -> Value {
         return ExtensionMessage::ExtensionMessageWithUrl(
             object_argument<NSURL>(call.arguments[0], "a URL"));
       }},
      {"queryUrl:", "ExtensionMessage", kInstance, 1,
       [](Call& call) -> Value {
         // The command is inserted by "%@", which takes any value, also null.
         return call.self.as<ExtensionMessage>()->queryUrl(call.arguments[0].description());
       }},
      {"isEqualToModel:", "ExtensionMessage", kInstance, 1,
       [](Call& call) -> Value { return is_equal_to_model(call); }},
      {"LaunchCommands:background:", "ExtensionUtilities", kClass, 2,
       [](Call& call) -> Value {
         return ExtensionUtilities::LaunchCommands(objects<NSURL>(call.arguments[0], "a URL"),
                                                   boolean_argument(call.arguments[1]));
       }},
      {"LaunchCommandForMessages:commandName:background:", "ExtensionUtilities", kClass, 3,
       [](Call& call) -> Value {
         return ExtensionUtilities::LaunchCommandForMessages(
             objects<ExtensionMessage>(call.arguments[0], "an ExtensionMessage"),
             text_argument(call.arguments[1]), boolean_argument(call.arguments[2]));
       }},
  };
}

}  // namespace quoll::console
