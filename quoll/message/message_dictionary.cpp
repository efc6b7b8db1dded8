#include <array>

#include "quoll/foundation/base64.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/bundle.h"
#include "quoll/platform/images.h"
#include "quoll/records/dictionary_reading.h"
#include "quoll/records/extension_date.h"

namespace quoll {

namespace {

using foundation::Date;
using foundation::Value;
using records::Field;

Value no_subject() {
  return platform::NSBundle::mainBundle()->localizedStringForKey("No subject", "");
}

Value zero() {
  return 0;
}

constexpr std::array message_fields{
    Field<ExtensionMessage>{"subject", &ExtensionMessage::subject, no_subject},
    Field<ExtensionMessage>{"messageId", &ExtensionMessage::messageId, records::empty_text},
    Field<ExtensionMessage>{"from", &ExtensionMessage::from, records::empty_text},
    Field<ExtensionMessage>{"account", &ExtensionMessage::account, records::empty_text},
    Field<ExtensionMessage>{"folder", &ExtensionMessage::folderPath, records::empty_text},
    Field<ExtensionMessage>{"folderStid", &ExtensionMessage::folderStandardId, zero},
    Field<ExtensionMessage>{"isUnread", &ExtensionMessage::unread, zero},
};

/// The picture in a Base64 text, with its origin at the top left; null when there is none. Raises
/// for anything but a text or null.
std::shared_ptr<platform::NSImage> picture(const Value& avatar) {
  const std::string* text = avatar.stringValue();
  const auto data =
      text == nullptr ? std::nullopt : foundation::base64_decode_ignoring_unknown(*text);
  auto image = data ? platform::NSImage::initWithData(*data) : nullptr;
  if (image) {
    image->flipped = true;
  }
  return image;
}

}  // namespace

std::shared_ptr<ExtensionMessage> ExtensionMessage::initWithDictonary(const Value& dictionary) {
  auto record = std::make_shared<ExtensionMessage>(foundation::Passkey<ExtensionMessage>());
  return records::guarded(record, [&](ExtensionMessage& message) {
    records::fill(message, dictionary, message_fields);
    // Single precision: the seconds of today's dates are rounded to multiples of 128.
    const Date received{dictionary.objectForKey("date").floatValue()};
    message.date = received;
    message.dateString = ExtensionDate::shared()->centralDate(received);
    message.image = picture(dictionary.objectForKey("avatar"));
  });
}

}  // namespace quoll
