#include "quoll/records/extension_address.h"

#include <array>

#include "quoll/foundation/format.h"
#include "quoll/foundation/text.h"
#include "quoll/records/dictionary_reading.h"

namespace quoll {

namespace {

using foundation::Value;
using records::Field;

Value no_mail() {
  return "No Mail";
}  // not translated, unlike an account's

constexpr std::array address_fields{
    Field<ExtensionAddress>{"mail", &ExtensionAddress::mail, no_mail},
    Field<ExtensionAddress>{"firstName", &ExtensionAddress::firstName, records::empty_text},
    Field<ExtensionAddress>{"lastName", &ExtensionAddress::lastName, records::empty_text},
    Field<ExtensionAddress>{"company", &ExtensionAddress::company, records::empty_text},
    Field<ExtensionAddress>{"nickname", &ExtensionAddress::nickname, records::empty_text},
};

}  // namespace

std::shared_ptr<ExtensionAddress> ExtensionAddress::make() {
  return std::make_shared<ExtensionAddress>(foundation::Passkey<ExtensionAddress>());
}

std::shared_ptr<ExtensionAddress> ExtensionAddress::initWithDictonary(const Value& dictionary) {
  return records::guarded(make(), [&](ExtensionAddress& address) {
    records::fill(address, dictionary, address_fields);
    address.rank = dictionary.objectForKey("rank").integerValue();
  });
}

std::string ExtensionAddress::fullName() const {
  return std::string(foundation::trim(foundation::format("%@ %@", firstName(), lastName())));
}

std::string ExtensionAddress::prettyprint() const {
  std::string text = fullName();
  if (const Value of = company(); text.empty() && of.length() != 0) {
    text = *of.stringValue();  // bytes have a length too, but cannot be printed here
  }
  if (const Value at = mail(); at.length() != 0) {
    text += foundation::format(" <%@>", at);
  }
  return std::string(foundation::trim(text));
}

std::string ExtensionAddress::description() const {
  return foundation::format("ExtensionAddress %@", mail());
}

}  // namespace quoll
