#include "quoll/container/group_container.h"

#include "quoll/container/layout.h"
#include "quoll/platform/bundle.h"
#include "quoll/platform/files.h"

namespace quoll::ExtensionUtilities {

namespace {

constexpr std::string_view kBetaMarker = "it.vorlent.quoll.beta";

}  // namespace

std::string GroupFolderName() {
  const foundation::Value identifier = platform::main_bundle_identifier();
  const std::string* text = identifier.text();
  const bool is_beta = text != nullptr && text->starts_with(kBetaMarker);
  return std::string(is_beta ? container::layout::shared_data_of_beta
                             : container::layout::shared_data);
}

std::shared_ptr<foundation::NSURL> GroupPath() {
  return platform::NSFileManager::defaultManager()
      ->containerURLForSecurityApplicationGroupIdentifier(application_group);
}

std::shared_ptr<foundation::NSURL> GroupDataPath() {
  return foundation::URLByAppendingPathComponent(GroupPath(), GroupFolderName());
}

}  // namespace quoll::ExtensionUtilities
