#include "quoll/records/extension_account.h"

#include <array>

#include "quoll/foundation/format.h"
#include "quoll/records/dictionary_reading.h"
#include "quoll/records/extension_alias.h"

namespace quoll {

namespace {

using foundation::List;
using foundation::Value;
using records::Field;

constexpr std::array account_fields{
    Field<ExtensionAccount>{"mail", &ExtensionAccount::mail, records::translated_no_mail},
    Field<ExtensionAccount>{"name", &ExtensionAccount::name, records::empty_text},
};

}  // namespace

std::shared_ptr<ExtensionAccount> ExtensionAccount::make() {
  return std::make_shared<ExtensionAccount>(foundation::Passkey<ExtensionAccount>());
}

std::shared_ptr<ExtensionAccount> ExtensionAccount::initWithDictonary(const Value& dictionary) {
  return records::guarded(make(), [&](ExtensionAccount& account) {
    records::fill(account, dictionary, account_fields);
    account.type = dictionary.objectForKey("type").integerValue();
    account.enabled = dictionary.objectForKey("enabled").boolValue();
    List identities;
    account.aliases = identities;
    for (const Value& element : dictionary.objectForKey("aliases").list()) {
      identities.addObject(ExtensionAlias::initWithDictonary(element));
    }
  });
}

std::string ExtensionAccount::description() const {
  return foundation::format("ExtensionAccount %@", mail());
}

}  // namespace quoll
