#include "quoll/share/share_view_controller.h"

#include "quoll/container/layout.h"
#include "quoll/container/staging.h"
#include "quoll/message/command_launcher.h"
#include "quoll/platform/log.h"
#include "quoll/share/item_gatherer.h"

namespace quoll {

namespace {

/// The staging folder and the service that fills it are one name.
constexpr std::string_view kService = container::layout::staging;

}  // namespace

std::string ShareViewController::nibName() const {
  return "ShareViewController";
}

void ShareViewController::loadView() {
  ExtensionUtilities::ShareInit(kService);
  NSViewController::loadView();
  cancel(nullptr);
  ExtensionUtilities::GetItemForExtension(extensionContext(), std::string(kService),
                                          open_compose_window);
}

void ShareViewController::viewDidLoad() {
  NSViewController::viewDidLoad();
}

void ShareViewController::send(const std::shared_ptr<foundation::Object>& /*sender*/) {
  if (const auto context = extensionContext()) {
    context->completeRequestReturningItems({std::make_shared<platform::NSExtensionItem>()},
                                           nullptr);
  }
}

void ShareViewController::cancel(const std::shared_ptr<foundation::Object>& /*sender*/) {
  if (const auto context = extensionContext()) {
    context->cancelRequestWithError(
        {std::string(foundation::NSCocoaErrorDomain), foundation::NSUserCancelledError, {}, {}});
  }
}

void ShareViewController::open_compose_window(const std::shared_ptr<ExtensionMessage>& message,
                                              const std::optional<foundation::Error>& error) {
  if (error) {
    platform::log("ShareFull %@", *error);
    return;
  }
  const auto url = message ? message->queryUrl(commandCompose) : nullptr;
  if (url) {
    ExtensionUtilities::LaunchCommands({url}, false);
  }
}

}  // namespace quoll
