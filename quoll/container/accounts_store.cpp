#include "quoll/container/accounts_store.h"

#include "quoll/container/coordinated_access.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/container/property_list_files.h"
#include "quoll/records/extension_account.h"

namespace quoll::ExtensionUtilities {

using foundation::List;
using foundation::NSURL;
using foundation::Value;

List Accounts() {
  List stored;
  container::with_coordinated_access(
      foundation::URLByAppendingPathComponent(GroupDataPath(), container::layout::accounts),
      "NSFileCoordinator Accounts %@", [&](const std::shared_ptr<NSURL>& location) {
        stored = container::array_with_contents_of_url(location);
      });
  List accounts;
  for (const Value& element : stored) {
    accounts.addObject(ExtensionAccount::initWithDictonary(element));
  }
  return accounts;
}

}  // namespace quoll::ExtensionUtilities
