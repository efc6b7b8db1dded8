#include "apps/console/operations/operation.h"
#include "quoll/container/accounts_store.h"
#include "quoll/container/contacts_store.h"
#include "quoll/message/extension_message.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_alias.h"

namespace quoll::console {

namespace {

using foundation::Value;
constexpr auto kClass = Operation::Level::kClass;

}  // namespace

std::vector<Operation> store_operations() {
  return {
      {"Accounts", "ExtensionUtilities", kClass, 0,
       [](Call&) -> Value { return ExtensionUtilities::Accounts(); }},
      {"AddressesAndGroups", "ExtensionUtilities", kClass, 0,
       [](Call&) -> Value { return ExtensionUtilities::AddressesAndGroups(); }},
      {"initWithDictonary:", "ExtensionAccount", kClass, 1,
       [](Call& call) -> Value { return ExtensionAccount::initWithDictonary(call.arguments[0]); }},
      {"initWithDictonary:", "ExtensionAlias", kClass, 1,
       [](Call& call) -> Value { return ExtensionAlias::initWithDictonary(call.arguments[0]); }},
      {"initWithDictonary:", "ExtensionMessage", kClass, 1,
       [](Call& call) -> Value { return ExtensionMessage::initWithDictonary(call.arguments[0]); }},
  };
}

}  // namespace quoll::console
