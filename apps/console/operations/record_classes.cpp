#include "apps/console/operations/record_classes.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "apps/console/operations/arguments.h"
#include "quoll/message/extension_message.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_address.h"
#include "quoll/records/extension_alias.h"
#include "quoll/records/extension_group.h"

namespace quoll::console {

namespace {

using foundation::List;
using foundation::Object;
using foundation::Value;

/// Converts `value` for a field of type `T`.
template <typename T>
T field_value(const Value& value) {
  if constexpr (std::is_same_v<T, bool>) {
    return boolean_argument(value);
  } else if constexpr (std::is_same_v<T, std::int64_t>) {
    return integer_argument(value);
  } else if constexpr (std::is_same_v<T, List>) {
    return list_argument(value);
  } else {
    static_assert(std::is_same_v<T, Value>);
    return value;
  }
}

template <typename Record, auto kProperty>
RecordField field(std::string_view name) {
  return {
      name,
      [](const Object& record) { return Value((static_cast<const Record&>(record).*kProperty)()); },
      [](Object& record, const Value& value) {
        auto& property = static_cast<Record&>(record).*kProperty;
        property = field_value<decltype(property())>(value);
      }};
}

RecordClass message_class() {
  using M = ExtensionMessage;
  return {"ExtensionMessage",
          []() -> std::shared_ptr<Object> { return M::make(); },
          {field<M, &M::subject>("subject"), field<M, &M::account>("account"),
           field<M, &M::from>("from"), field<M, &M::messageId>("messageId"),
           field<M, &M::folderPath>("folderPath"), field<M, &M::dateString>("dateString"),
           field<M, &M::plainBody>("plainBody"), field<M, &M::htmlBody>("htmlBody"),
           field<M, &M::date>("date"), field<M, &M::image>("image"), field<M, &M::unread>("unread"),
           field<M, &M::folderStandardId>("folderStandardId"), field<M, &M::to>("to"),
           field<M, &M::cc>("cc"), field<M, &M::bcc>("bcc"), field<M, &M::toString>("toString"),
           field<M, &M::ccString>("ccString"), field<M, &M::bccString>("bccString"),
           field<M, &M::attachments>("attachments")}};
}

RecordClass address_class() {
  using A = ExtensionAddress;
  return {"ExtensionAddress",
          []() -> std::shared_ptr<Object> { return A::make(); },
          {field<A, &A::mail>("mail"), field<A, &A::firstName>("firstName"),
           field<A, &A::lastName>("lastName"), field<A, &A::company>("company"),
           field<A, &A::nickname>("nickname"), field<A, &A::rank>("rank")}};
}

RecordClass group_class() {
  using G = ExtensionGroup;
  return {
      "ExtensionGroup",
      []() -> std::shared_ptr<Object> { return G::make(); },
      {field<G, &G::idx>("idx"), field<G, &G::name>("name"), field<G, &G::addresses>("addresses")}};
}

RecordClass account_class() {
  using A = ExtensionAccount;
  return {"ExtensionAccount",
          []() -> std::shared_ptr<Object> { return A::make(); },
          {field<A, &A::mail>("mail"), field<A, &A::name>("name"), field<A, &A::aliases>("aliases"),
           field<A, &A::type>("type"), field<A, &A::enabled>("enabled")}};
}

RecordClass alias_class() {
  using A = ExtensionAlias;
  return {
      "ExtensionAlias",
      []() -> std::shared_ptr<Object> { return A::make(); },
      {field<A, &A::mail>("mail"), field<A, &A::name>("name"), field<A, &A::account>("account")}};
}

}  // namespace

const RecordField* RecordClass::field(std::string_view wanted) const {
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const RecordField& one) { return one.name == wanted; });
  return found == fields.end() ? nullptr : &*found;
}

const std::vector<RecordClass>& record_classes() {
  static const std::vector<RecordClass> classes{message_class(), address_class(), group_class(),
                                                account_class(), alias_class()};
  return classes;
}

const RecordClass* record_class(std::string_view name) {
  const auto& classes = record_classes();
  const auto found = std::find_if(classes.begin(), classes.end(),
                                  [&](const RecordClass& one) { return one.name == name; });
  return found == classes.end() ? nullptr : &*found;
}

}  // namespace quoll::console
