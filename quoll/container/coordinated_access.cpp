#include "quoll/container/coordinated_access.h"

#include <optional>

#include "quoll/platform/coordinator.h"
#include "quoll/platform/log.h"

namespace quoll::container {

void with_coordinated_access(
    const std::shared_ptr<foundation::NSURL>& url, foundation::Pattern<1> failure_line,
    const std::function<void(const std::shared_ptr<foundation::NSURL>& location)>& accessor) {
  const auto error = platform::NSFileCoordinator::create()->coordinateWritingItemAtURL(
      url, platform::NSFileCoordinatorWritingForDeleting, accessor);
  if (error) {
    platform::log_event({foundation::format(failure_line, *error),
                         foundation::quoll_error(foundation::kNotCoordinatedError, *error)});
  }
}

}  // namespace quoll::container
