#include "quoll/container/coordinated_access.h"

#include <optional>
#include <utility>

#include "quoll/platform/coordinator.h"
#include "quoll/platform/log.h"

namespace quoll::container {

void with_coordinated_access(
    const std::shared_ptr<foundation::NSURL>& url, std::string_view failure_line,
    const std::function<void(const std::shared_ptr<foundation::NSURL>& location)>& accessor) {
  std::optional<foundation::Error> error;
  platform::NSFileCoordinator::create()->coordinateWritingItemAtURL(
      url, platform::NSFileCoordinatorWritingForDeleting, error, accessor);
  if (error) {
    platform::log_event({foundation::format(failure_line, *error), not_coordinated(*error)});
  }
}

foundation::Error not_coordinated(foundation::Error reason) {
  auto error = foundation::quoll_error(foundation::kNotCoordinatedError,
                                       "The access to shared files was not granted.");
  error.user_info.emplace_back(foundation::NSUnderlyingErrorKey,
                               std::make_shared<const foundation::Error>(std::move(reason)));
  return error;
}

}  // namespace quoll::container
