#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "quoll/foundation/error.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/polymorphic.h"

namespace quoll::platform {

/// `NSFileCoordinatorWritingOptions`.
enum NSFileCoordinatorWritingOptions : unsigned {
  NSFileCoordinatorWritingForDeleting = 1,  ///< the writer may delete or replace the item
};

/// Keeps programs, and threads of one program, apart while they work on shared files. One object
/// serves one operation and belongs to one thread.
class NSFileCoordinator : public foundation::Polymorphic {
 public:
  /// `initWithFilePresenter:` without a presenter; never null.
  [[nodiscard]] static std::unique_ptr<NSFileCoordinator> create();

  /// `coordinateWritingItemAtURL:options:error:byAccessor:`. Waits until the access is granted,
  /// then runs the accessor on this thread, with the location to use, and returns when it has
  /// returned; what it throws passes through. With `NSFileCoordinatorWritingForDeleting` it
  /// excludes every other access to the item and to all inside it, and deleting writers of each
  /// folder above it. Answers why the access could not be had (a null URL, no container): then the
  /// accessor does not run. Nothing when it was had. Nothing is logged.
  [[nodiscard]] virtual std::optional<foundation::Error> coordinateWritingItemAtURL(
      const std::shared_ptr<foundation::NSURL>& url, NSFileCoordinatorWritingOptions options,
      const std::function<void(const std::shared_ptr<foundation::NSURL>&)>& accessor) = 0;
};

}  // namespace quoll::platform
