#include "apps/console/operations/arguments.h"
#include "apps/console/operations/operation.h"
#include "apps/console/operations/record_classes.h"
#include "quoll/records/extension_address.h"
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

/// Adds the operations of a record class: its factory, and a getter and a setter for each field.
void add_record_class(const RecordClass& known, std::vector<Operation>& rows) {
  const std::string owner(known.name);
  for (const char* factory : {"new", "init"}) {
    rows.push_back(
        {factory, owner, kClass, 0, [make = known.make](Call&) -> Value { return make(); }});
  }
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
      {"initWithDictonary:", "ExtensionAddress", kClass, 1,
       [](Call& call) -> Value { return ExtensionAddress::initWithDictonary(call.arguments[0]); }},
      {"fullName", "ExtensionAddress", kInstance, 0,
       [](Call& call) -> Value { return call.self.as<ExtensionAddress>()->fullName(); }},
      {"prettyprint", "ExtensionAddress", kInstance, 0,
       [](Call& call) -> Value { return call.self.as<ExtensionAddress>()->prettyprint(); }},
      {"initWithDictonary:", "ExtensionGroup", kClass, 1,
       [](Call& call) -> Value { return ExtensionGroup::initWithDictonary(call.arguments[0]); }},
      {"prettyprint", "ExtensionGroup", kInstance, 0,
       [](Call& call) -> Value { return call.self.as<ExtensionGroup>()->prettyprint(); }},
  };
  for (const RecordClass& known : record_classes()) {
    add_record_class(known, rows);
  }
  return rows;
}

}  // namespace quoll::console
