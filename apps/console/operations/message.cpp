#include "apps/console/operations/binding.h"
#include "quoll/message/command_launcher.h"
#include "quoll/message/extension_message.h"

namespace quoll::console {

namespace {

using Message = ExtensionMessage;

/// A null model equals no message.
bool is_equal_to_model(const Message& message, const std::shared_ptr<Message>& model) {
  return model && message.isEqualToModel(*model);
}

/// The command is inserted by "%@", which takes any value, also null.
std::shared_ptr<foundation::NSURL> query_url(const Message& message,
                                             const foundation::Value& command) {
  return message.queryUrl(command.description());
}

template <auto kFunction>
Operation of_message(std::string name) {
  return instance_operation<kFunction>(std::move(name), "ExtensionMessage");
}

}  // namespace

std::vector<Operation> message_operations() {
  namespace Utils = ExtensionUtilities;
  return {
      class_operation<Message::ExtensionMessageWithUrl>("ExtensionMessageWithUrl:",
                                                        "ExtensionMessage"),
      class_operation<Message::initWithDictonary>("initWithDictonary:", "ExtensionMessage"),
      of_message<query_url>("queryUrl:"),
      of_message<is_equal_to_model>("isEqualToModel:"),
      changing_operation<&Message::renderHtml>("renderHtml", "ExtensionMessage"),
      of_message<&Message::searchUrlsDetector>("searchUrlsDetector:"),
      class_operation<Utils::LaunchCommands>("LaunchCommands:background:", "ExtensionUtilities"),
      class_operation<Utils::LaunchCommandForMessages>(
          "LaunchCommandForMessages:commandName:background:", "ExtensionUtilities"),
  };
}

}  // namespace quoll::console
