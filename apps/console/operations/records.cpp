#include <functional>

#include "apps/console/operations/binding.h"
#include "apps/console/operations/record_classes.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_address.h"
#include "quoll/records/extension_alias.h"
#include "quoll/records/extension_group.h"

namespace quoll::console {

namespace {

using foundation::Value;
constexpr auto kInstance = Operation::Level::kInstance;
constexpr auto kClass = Operation::Level::kClass;

std::string setter_name(std::string_view field) {
  std::string name = "set" + std::string(field) + ":";
  name[3] = static_cast<char>(name[3] - 'a' + 'A');  // every field begins with a lower-case letter
  return name;
}

/// By identity: equal records have different ones.
Value hash(Call& call) {
  return std::hash<foundation::Object*>()(call.self.object().get());
}

/// Adds the operations of a record class: its factory, its hash, and a getter and a setter for each
/// field.
void add_record_class(const RecordClass& known, std::vector<Operation>& rows) {
  const std::string owner(known.name);
  for (const char* factory : {"new", "init"}) {
    rows.push_back(
        {factory, owner, kClass, 0, [make = known.make](Call&) -> Value { return make(); }});
  }
  rows.push_back({"hash", owner, kInstance, 0, hash});
  for (const RecordField& field : known.fields) {
    rows.push_back({std::string(field.name), owner, kInstance, 0,
                    [get = field.get](Call& call) { return get(*call.self.object()); }});
    rows.push_back({setter_name(field.name), owner, kInstance, 1,
                    [set = field.set](Call& call) -> Value {
                      set(*call.self.object(), call.arguments[0]);
                      return {};
                    },
                    true});
  }
}

}  // namespace

std::vector<Operation> record_operations() {
  std::vector<Operation> rows{
      {"description", "", kInstance, 0,
       [](Call& call) -> Value { return call.self.description(); }},
      {"isEqual:", "", kInstance, 1,
       [](Call& call) -> Value {
         const auto object = call.self.object();
         return object ? object->isEqual(call.arguments[0].object().get())
                       : call.self == call.arguments[0];
       }},
      class_operation<ExtensionAddress::initWithDictonary>("initWithDictonary:",
                                                           "ExtensionAddress"),
      instance_operation<&ExtensionAddress::fullName>("fullName", "ExtensionAddress"),
      instance_operation<&ExtensionAddress::prettyprint>("prettyprint", "ExtensionAddress"),
      class_operation<ExtensionGroup::initWithDictonary>("initWithDictonary:", "ExtensionGroup"),
      instance_operation<&ExtensionGroup::prettyprint>("prettyprint", "ExtensionGroup"),
      class_operation<ExtensionAccount::initWithDictonary>("initWithDictonary:",
                                                           "ExtensionAccount"),
      class_operation<ExtensionAlias::initWithDictonary>("initWithDictonary:", "ExtensionAlias"),
  };
  for (const RecordClass& known : record_classes()) {
    add_record_class(known, rows);
  }
  return rows;
}

}  // namespace quoll::console
