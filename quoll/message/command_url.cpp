#include "quoll/message/command_url.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "quoll/foundation/exception.h"
#include "quoll/foundation/format.h"
#include "quoll/message/extension_message.h"
#include "quoll/records/addressable.h"
#include "quoll/requestutils/url_query.h"

namespace quoll {

namespace {

using foundation::Dictionary;
using foundation::List;
using foundation::NSURL;
using foundation::Value;

struct TextKey {
  std::string_view key;
  ExtensionMessage::Text ExtensionMessage::*field;
};

/// The fields that are written unchanged, in this order.
constexpr std::array text_keys{
    TextKey{"plainBody", &ExtensionMessage::plainBody},
    TextKey{"htmlBody", &ExtensionMessage::htmlBody},
    TextKey{"subject", &ExtensionMessage::subject},
    TextKey{"from", &ExtensionMessage::from},
    TextKey{"account", &ExtensionMessage::account},
};

struct RecipientKey {
  std::string_view key;
  /// The URL is written from this list ...
  ExtensionMessage::MutableList ExtensionMessage::*list;
  /// ... and is read back into this text.
  ExtensionMessage::Text ExtensionMessage::*text;
};

constexpr std::array recipient_keys{
    RecipientKey{"bcc", &ExtensionMessage::bcc, &ExtensionMessage::bccString},
    RecipientKey{"cc", &ExtensionMessage::cc, &ExtensionMessage::ccString},
    RecipientKey{"to", &ExtensionMessage::to, &ExtensionMessage::toString},
};

Value address_of(const Value& recipient) {
  const auto object = recipient.object();
  const auto* addressable = dynamic_cast<const Addressable*>(object.get());
  if (addressable == nullptr) {
    foundation::raise_invalid_argument("mail was asked of " + std::string(recipient.kind()));
  }
  return addressable->address();
}

std::string joined(const List& recipients) {
  std::string text;
  for (const Value& recipient : recipients.copy()) {
    text += foundation::format("%@;", address_of(recipient));
  }
  return text;
}

/// Whether an attachment is a path or a URL. Any other kind is left out.
bool is_attachment(const Value& element) {
  return element.text() != nullptr || element.as<NSURL>() != nullptr;
}

/// The path of an attachment. Null for a URL without a path: storing that in a dictionary raises.
Value attachment_path(const Value& attachment) {
  const auto url = attachment.as<NSURL>();
  if (!url) {
    return attachment;
  }
  const auto path = url->path();
  return path ? Value(*path) : Value();
}

void add_attachments(const List& attachments, Dictionary& parameters) {
  std::size_t index = 0;
  for (const Value& attachment : attachments) {
    if (is_attachment(attachment)) {
      parameters.setObject(attachment_path(attachment),
                           std::string(command_url::attachment_prefix) + std::to_string(index));
    }
    ++index;
  }
}

void read_parameter(ExtensionMessage& message, std::string_view key, const Value& value) {
  for (const TextKey& known : text_keys) {
    if (known.key == key) {
      message.*known.field = value;
      return;
    }
  }
  for (const RecipientKey& known : recipient_keys) {
    if (known.key == key) {
      message.*known.text = value;
      return;
    }
  }
  if (key.starts_with(command_url::attachment_prefix)) {
    message.attachments().addObject(value);
  }
}

}  // namespace

bool command_url::is_message_key(std::string_view key) {
  return key.starts_with(attachment_prefix) ||
         std::ranges::find(text_keys, key, &TextKey::key) != text_keys.end() ||
         std::ranges::find(recipient_keys, key, &RecipientKey::key) != recipient_keys.end();
}

std::shared_ptr<ExtensionMessage> command_url::message_of(const Dictionary& parameters) {
  auto message = ExtensionMessage::make();
  for (const auto& [key, value] : parameters) {
    read_parameter(*message, key, value);
  }
  return message;
}

std::shared_ptr<NSURL> ExtensionMessage::queryUrl(std::string_view command) const {
  // Load handlers that answer late may still append to the lists.
  const auto lock = synchronized();
  Dictionary parameters;
  for (const TextKey& known : text_keys) {
    if (Value text = (this->*known.field)(); text.length() != 0) {
      parameters.setObject(std::move(text), known.key);
    }
  }
  for (const RecipientKey& known : recipient_keys) {
    if (std::string text = joined((this->*known.list)()); !text.empty()) {
      parameters.setObject(std::move(text), known.key);
    }
  }
  add_attachments(attachments(), parameters);
  std::string url = RequestUtils::URLQueryWithParameters(parameters);
  url.insert(0, foundation::format("quoll://%@?", command));  // a body can be large: not copied
  return NSURL::URLTakingString(std::move(url));
}

std::shared_ptr<ExtensionMessage> ExtensionMessage::ExtensionMessageWithUrl(
    const std::shared_ptr<NSURL>& url) {
  return url ? command_url::message_of(RequestUtils::URLQueryParameters(url->absoluteString()))
             : make();
}

}  // namespace quoll
