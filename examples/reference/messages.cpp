#include "quoll/message/extension_message.h"

#include <iostream>

#include "examples/reference/examples.h"
#include "quoll/message/command_launcher.h"
#include "quoll/message/received_command.h"

void examples::messages() {
  using namespace quoll;
  const auto message = ExtensionMessage::make();
  message->subject = "Hi & bye";
  message->attachments().addObject("/tmp/a.txt");
  const auto url = message->queryUrl(commandCompose);
  std::cout << url->absoluteString()
            << '\n';  // quoll://compose?subject=Hi%20%26%20bye&attachment_0=%2Ftmp%2Fa.txt
  const auto received = read_received_command(url->absoluteString());
  std::cout << received.command << ' ' << received.attachments.front()
            << '\n';  // compose /tmp/a.txt
  const auto read = ExtensionMessage::ExtensionMessageWithUrl(url);
  std::cout << read->subject().description() << '\n';  // Hi & bye
  message->plainBody = "a\nb";
  message->htmlBody = nullptr;
  std::cout << message->renderHtml() << '\n';  // a<br>b
}
