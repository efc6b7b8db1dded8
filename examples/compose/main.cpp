// Opens a compose window for a message from the first account of the mail application.
#include <iostream>

#include "quoll/container/accounts_store.h"
#include "quoll/linux/gio/launcher.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/program_bundle.h"
#include "quoll/linux/posix/system_log.h"
#include "quoll/message/command_launcher.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/desktop.h"
#include "quoll/records/extension_account.h"

int main() {
  const auto launcher = quoll::gio::start_launcher();  // a process of its own, before any thread
  quoll::platform::install(
      {.bundle = quoll::posix::make_program_bundle("it.vorlent.quoll2.Example"),
       .files = quoll::posix::make_file_manager(),
       .coordinator = quoll::posix::coordinator_factory(),
       .workspace = launcher,
       .log = quoll::posix::make_system_log("compose-example")});
  const auto accounts = quoll::ExtensionUtilities::Accounts();
  if (accounts.empty()) {
    std::cerr << "there are no accounts\n";
    return 1;
  }
  const auto message = quoll::ExtensionMessage::make();
  message->from = accounts.objectAtIndex(0).as<quoll::ExtensionAccount>()->mail();
  message->subject = "Hello from an example";
  message->htmlBody = "<p>Written by another extension.</p>";
  const auto url = message->queryUrl(quoll::commandCompose);
  return quoll::ExtensionUtilities::LaunchCommands({url}, false) ? 0 : 1;
}
