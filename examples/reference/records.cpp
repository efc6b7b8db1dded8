#include <iostream>

#include "examples/reference/examples.h"
#include "quoll/records/extension_account.h"
#include "quoll/records/extension_address.h"
#include "quoll/records/extension_alias.h"
#include "quoll/records/extension_group.h"

void examples::records() {
  using namespace quoll;
  using foundation::Dictionary;
  using foundation::List;
  const Dictionary ann{{"mail", "a@h"}, {"firstName", "Ann"}, {"lastName", "Lee"}};
  const auto address = ExtensionAddress::initWithDictonary(ann);
  std::cout << address->prettyprint() << '\n';  // Ann Lee <a@h>
  const auto group =
      ExtensionGroup::initWithDictonary(Dictionary{{"name", "Friends"}, {"addresses", List{ann}}});
  std::cout << group->prettyprint() << '\n';  // Friends (1)
  const auto account = ExtensionAccount::initWithDictonary(Dictionary{
      {"mail", "a@h"}, {"enabled", "YES"}, {"aliases", List{Dictionary{{"mail", "o@h"}}}}});
  std::cout << account->description() << ' ' << account->enabled()
            << '\n';  // ExtensionAccount a@h 1
  const auto aliases = account->aliases();
  std::cout << aliases.objectAtIndex(0).as<ExtensionAlias>()->mail().description() << '\n';  // o@h
}
