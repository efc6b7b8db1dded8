#include "quoll/container/contacts_store.h"

#include "quoll/container/coordinated_access.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/container/property_list_files.h"
#include "quoll/platform/files.h"
#include "quoll/platform/log.h"
#include "quoll/records/extension_address.h"

namespace quoll::ExtensionUtilities {

namespace {

using foundation::Dictionary;
using foundation::List;
using foundation::NSURL;
using foundation::Value;

/// Makes the folder when nothing is there; whatever is there counts. False when that fails.
bool make_contacts_folder(const std::shared_ptr<NSURL>& location) {
  const auto files = platform::NSFileManager::defaultManager();
  if (files->fileExistsAtPath(foundation::file_system_path(location).value_or(""))) {
    return true;
  }
  const auto error = files->createDirectoryAtURL(location);
  if (error) {
    platform::log("AddressesAndGroups %@", *error);
  }
  return !error;
}

List stored_list(const std::shared_ptr<NSURL>& folder, std::string_view name) {
  return container::array_with_contents_of_url(
      foundation::URLByAppendingPathComponent(folder, name));
}

}  // namespace

Dictionary AddressesAndGroups() {
  List stored;
  container::with_coordinated_access(
      foundation::URLByAppendingPathComponent(GroupDataPath(), container::layout::contacts),
      "NSFileCoordinator AddressesAndGroups %@", [&](const std::shared_ptr<NSURL>& location) {
        if (make_contacts_folder(location)) {
          stored = stored_list(location, container::layout::addresses);
          // Groups are read like addresses, and then nothing is made of them.
          static_cast<void>(stored_list(location, container::layout::groups));
        }
      });
  List addresses;
  for (const Value& element : stored) {
    addresses.addObject(ExtensionAddress::initWithDictonary(element));
  }
  return {{"addresses", addresses}, {"groups", List()}};
}

}  // namespace quoll::ExtensionUtilities
