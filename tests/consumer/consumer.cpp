// What crosses the library's border: constants, records, classes that are asked for, exceptions.
#include <iostream>

#include "quoll/foundation/exception.h"
#include "quoll/message/command_launcher.h"
#include "quoll/message/extension_message.h"
#include "quoll/records/extension_address.h"
#include "quoll/requestutils/url_components.h"
#include "quoll/requestutils/url_query.h"

int main() {
  using quoll::foundation::Dictionary;
  const auto address = quoll::ExtensionAddress::initWithDictonary(Dictionary{{"mail", "j@h"}});
  const auto message = quoll::ExtensionMessage::make();
  message->to().addObject(address);
  std::cout << message->queryUrl(quoll::commandCompose)->absoluteString() << '\n'
            << message->to().objectAtIndex(0).as<quoll::ExtensionAddress>()->prettyprint() << '\n'
            << quoll::it_vorlent_quoll_2 << '\n'
            << quoll::RequestUtils::URLFragmentComponent << '\n';
  try {
    static_cast<void>(quoll::RequestUtils::URLQueryParameters("?a=%FF"));
  } catch (const quoll::foundation::NSException& exception) {
    std::cout << exception.name() << '\n';
  }
}
