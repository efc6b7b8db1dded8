#include "quoll/container/property_list_files.h"

#include <optional>

#include "quoll/foundation/property_list.h"
#include "quoll/platform/files.h"

namespace quoll::container {

namespace {

/// The root of the document at the URL, null when there is none.
foundation::Value root_of(const std::shared_ptr<foundation::NSURL>& url) {
  const auto path = foundation::file_system_path(url);
  if (!path) {
    return {};
  }
  const auto contents = platform::NSFileManager::defaultManager()->contentsAtPath(*path);
  const auto* const bytes = std::get_if<foundation::Bytes>(&contents);
  return bytes != nullptr ? foundation::read_property_list(*bytes).value_or(foundation::Value())
                          : foundation::Value();
}

}  // namespace

foundation::List array_with_contents_of_url(const std::shared_ptr<foundation::NSURL>& url) {
  return root_of(url).as<foundation::List>();
}

}  // namespace quoll::container
