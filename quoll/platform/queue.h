#pragma once

#include <functional>

#include "quoll/foundation/polymorphic.h"

namespace quoll::platform {

/// The priorities of the platform's global queues that the system uses.
enum class QueuePriority : int {
  kDefault = 0,
  /// `DISPATCH_QUEUE_PRIORITY_BACKGROUND`.
  kBackground = -32768,
};

/// The platform's global queues: blocks run at some time on some thread, several at once.
class Queue : public foundation::Polymorphic {
 public:
  /// `dispatch_async` onto the global queue of that priority. Returns at once; never runs the block
  /// before it returns. A platform exception that leaves a block is logged and ends the block only.
  /// Throws a `std::exception` when the block could never run.
  virtual void async(QueuePriority priority, std::function<void()> block) = 0;
};

/// Runs a block as every queue does: what leaves it is logged and ends this block only.
void run_block(const std::function<void()>& block);

/// `dispatch_async` onto the installed queue.
void dispatch_async(QueuePriority priority, std::function<void()> block);

}  // namespace quoll::platform
