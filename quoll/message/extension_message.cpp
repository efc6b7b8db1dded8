#include "quoll/message/extension_message.h"

#include "quoll/foundation/format.h"

namespace quoll {

void ExtensionMessage::init() {
  htmlBody = "";
  plainBody = "";
  to = foundation::List();
  cc = foundation::List();
  bcc = foundation::List();
  attachments = foundation::List();
}

std::shared_ptr<ExtensionMessage> ExtensionMessage::make() {
  auto message = std::make_shared<ExtensionMessage>(foundation::Passkey<ExtensionMessage>());
  message->init();
  return message;
}

bool ExtensionMessage::isEqual(const foundation::Object* other) const {
  if (other == this) {
    return true;
  }
  const auto* message = dynamic_cast<const ExtensionMessage*>(other);
  return message != nullptr && isEqualToModel(*message);
}

bool ExtensionMessage::isEqualToModel(const ExtensionMessage& other) const {
  return &other == this || (messageId().isEqualToString(other.messageId()) &&
                            account().isEqualToString(other.account()));
}

std::string ExtensionMessage::description() const {
  return foundation::format("ExtensionMessage %@", subject());
}

}  // namespace quoll
