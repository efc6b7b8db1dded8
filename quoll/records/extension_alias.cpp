#include "quoll/records/extension_alias.h"

#include <array>

#include "quoll/foundation/format.h"
#include "quoll/records/dictionary_reading.h"

namespace quoll {

namespace {

using records::Field;

constexpr std::array alias_fields{
    Field<ExtensionAlias>{"mail", &ExtensionAlias::mail, records::translated_no_mail},
    Field<ExtensionAlias>{"name", &ExtensionAlias::name, records::empty_text},
    Field<ExtensionAlias>{"account", &ExtensionAlias::account, records::empty_text},
};

}  // namespace

std::shared_ptr<ExtensionAlias> ExtensionAlias::make() {
  return std::make_shared<ExtensionAlias>(foundation::Passkey<ExtensionAlias>());
}

std::shared_ptr<ExtensionAlias> ExtensionAlias::initWithDictonary(
    const foundation::Value& dictionary) {
  return records::guarded(
      make(), [&](ExtensionAlias& alias) { records::fill(alias, dictionary, alias_fields); });
}

std::string ExtensionAlias::description() const {
  return foundation::format("ExtensionAlias %@", mail());
}

}  // namespace quoll
