// Opens a compose window. With a `--print`, prints the command URL instead.
#include <iostream>

#include "quoll/linux/gio/launcher.h"
#include "quoll/linux/posix/program_bundle.h"
#include "quoll/message/command_launcher.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/desktop.h"
#include "quoll/records/extension_address.h"

int main(int count, char** /*arguments*/) {
  const auto launcher = quoll::gio::start_launcher();  // a process of its own, before any thread
  quoll::platform::install(
      {.bundle = quoll::posix::make_program_bundle("it.vorlent.quoll2.Example"),
       .workspace = launcher});
  const auto to = quoll::ExtensionAddress::make();
  to->mail = "zoe@example.org";
  const auto message = quoll::ExtensionMessage::make();
  message->subject = "Hello & welcome";
  message->htmlBody = "<p>Written by another extension.</p>";
  message->to().addObject(to);
  const auto url = message->queryUrl(quoll::commandCompose);
  if (count > 1) {
    std::cout << url->absoluteString() << '\n';
    return 0;
  }
  return quoll::ExtensionUtilities::LaunchCommands({url}, false) ? 0 : 1;
}
