// Prints the accounts and the addresses of the mail application.
#include <iostream>

#include "quoll/container/accounts_store.h"
#include "quoll/container/contacts_store.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/program_bundle.h"
#include "quoll/platform/desktop.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_address.h"

int main() {
  quoll::platform::install(
      {.bundle = quoll::posix::make_program_bundle("it.vorlent.quoll2.Example"),
       .files = quoll::posix::make_file_manager(),
       .coordinator = quoll::posix::coordinator_factory()});
  for (const auto& element : quoll::ExtensionUtilities::Accounts()) {
    const auto account = element.as<quoll::ExtensionAccount>();
    std::cout << account->mail().description() << (account->enabled() ? "" : " (disabled)") << '\n';
  }
  const auto contacts = quoll::ExtensionUtilities::AddressesAndGroups();
  const auto addresses = contacts.objectForKey("addresses");
  for (const auto& element : addresses.list()) {
    std::cout << element.as<quoll::ExtensionAddress>()->prettyprint() << '\n';
  }
}
