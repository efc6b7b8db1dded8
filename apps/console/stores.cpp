#include <iostream>
#include <memory>
#include <string>
#include <variant>

#include "apps/console/commands.h"
#include "apps/console/operations/json.h"
#include "apps/console/operations/record_classes.h"
#include "apps/console/operations/write_value.h"
#include "apps/console/output.h"
#include "apps/console/program_desktop.h"
#include "quoll/container/accounts_store.h"
#include "quoll/container/contacts_store.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/container/property_list_files.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/property_list.h"
#include "quoll/platform/files.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_address.h"
#include "quoll/records/extension_alias.h"

namespace quoll::console {

namespace {

namespace layout = container::layout;
using foundation::List;
using foundation::Value;

/// The JSON of a record (an object of its fields) or of a list of records (an array of such
/// objects).
Json plain(const Value& value) {
  if (const auto list = value.as<List>()) {
    Json array = Json::array();
    for (const Value& element : list) {
      array.push_back(plain(element));
    }
    return array;
  }
  const auto object = value.object();
  const auto* known = object ? record_class(object->class_name()) : nullptr;
  if (known == nullptr) {
    return write_value(value);
  }
  Json fields = Json::object();
  for (const RecordField& field : known->fields) {
    append(fields, std::string(field.name), plain(field.get(*object)));
  }
  return fields;
}

std::string shown(const Value& value) {
  return foundation::printable(foundation::text_of(value));
}

void print_account(const ExtensionAccount& account) {
  std::cout << shown(account.mail()) << "  " << shown(account.name()) << "  type " << account.type()
            << (account.enabled() ? "" : "  (disabled)") << '\n';
  for (const Value& element : account.aliases()) {
    const auto alias = element.as<ExtensionAlias>();
    std::cout << "  alias " << shown(alias->mail()) << "  " << shown(alias->name()) << '\n';
  }
}

/// Why a file is not a property list that holds a list; empty when it is.
std::string fault_in(const std::string& path) {
  const auto contents = platform::NSFileManager::defaultManager()->contentsAtPath(path);
  if (const auto* const error = std::get_if<foundation::Error>(&contents)) {
    return error->text;
  }
  const auto& bytes = std::get<foundation::Bytes>(contents);
  foundation::PropertyListFault fault;
  const auto root = foundation::read_property_list(
      {reinterpret_cast<const char*>(bytes.data()), bytes.size()}, fault);
  if (root) {
    return root->as<List>() ? "" : "it holds " + std::string(root->kind());
  }
  const std::string place = fault.line == 0 ? ""
                                            : "line " + std::to_string(fault.line) + ", column " +
                                                  std::to_string(fault.column) + ": ";
  return place + fault.reason;
}

/// Why a store cannot be read; empty when it can be read and is empty.
std::string fault_of(std::string_view name) {
  const auto store =
      foundation::URLByAppendingPathComponent(ExtensionUtilities::GroupDataPath(), name);
  if (!store) {
    return "there is no group container";
  }
  const std::string path = foundation::file_system_path(store).value_or("");
  if (!platform::NSFileManager::defaultManager()->fileExistsAtPath(path)) {
    return path + " is not there: the mail application has not written it";
  }
  const std::string fault = fault_in(path);
  return fault.empty() ? ""
                       : path + " cannot be read as a property list that holds a list: " + fault;
}

/// Prints what was read and answers the exit status. For people it is printed by `print_records`.
template <typename PrintRecords>
int tell(const List& records, std::string_view store, const Json& json, bool as_json,
         const PrintRecords& print_records) {
  if (const std::string fault = records.empty() ? fault_of(store) : ""; !fault.empty()) {
    return complain(fault);
  }
  if (as_json) {
    print_json(json);
  } else {
    print_records();
  }
  return finish();
}

}  // namespace

int accounts(bool as_json) {
  const platform::ScopedDesktop desktop(reading_desktop());
  const auto read = ExtensionUtilities::Accounts();
  return tell(read, layout::accounts, plain(read), as_json, [&] {
    for (const Value& account : read) {
      print_account(*account.as<ExtensionAccount>());
    }
  });
}

int contacts(bool as_json) {
  const platform::ScopedDesktop desktop(reading_desktop());
  const auto read = ExtensionUtilities::AddressesAndGroups();
  const auto addresses = read.objectForKey("addresses").as<List>();
  const Json json{{"addresses", plain(addresses)}, {"groups", plain(read.objectForKey("groups"))}};
  try {
    return tell(addresses,
                foundation::appending_path_component(layout::contacts, layout::addresses), json,
                as_json, [&] {
                  for (const Value& address : addresses) {
                    std::cout << shown(address.as<ExtensionAddress>()->prettyprint()) << '\n';
                  }
                });
  } catch (const foundation::NSException& exception) {
    return complain("an address cannot be shown: " + exception.reason());
  }
}

}  // namespace quoll::console
