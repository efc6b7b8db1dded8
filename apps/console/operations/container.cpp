#include "apps/console/operations/binding.h"
#include "quoll/container/accounts_store.h"
#include "quoll/container/contacts_store.h"
#include "quoll/container/group_container.h"
#include "quoll/container/staging.h"
#include "quoll/container/unique_name.h"

namespace quoll::console {

namespace {

template <auto kFunction>
Operation of_extension(std::string name) {
  return class_operation<kFunction>(std::move(name), "ExtensionUtilities");
}

}  // namespace

std::vector<Operation> container_operations() {
  namespace Utils = ExtensionUtilities;
  return {
      of_extension<Utils::GroupFolderName>("GroupFolderName"),
      of_extension<Utils::GroupPath>("GroupPath"),
      of_extension<Utils::GroupDataPath>("GroupDataPath"),
      of_extension<Utils::ShareInit>("ShareInit:"),
      of_extension<Utils::ShareFiles>("ShareFiles:paths:"),
      of_extension<Utils::ShareDatas>("ShareDatas:datas:"),
      of_extension<Utils::Accounts>("Accounts"),
      of_extension<Utils::AddressesAndGroups>("AddressesAndGroups"),
      class_operation<Vorlent_Fs::GetGoodPath>("GetGoodPath:folder:", "NSString"),
  };
}

}  // namespace quoll::console
