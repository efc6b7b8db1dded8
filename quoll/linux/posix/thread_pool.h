#pragma once

#include <memory>

#include "quoll/platform/queue.h"

namespace quoll::posix {

/// Queues on threads of this process.
///
/// A few threads share the blocks of `kDefault`. Each block of `kBackground` gets a thread of its
/// own at a lower priority (nice 10), so blocks that wait never keep handlers from running, neither
/// by taking their threads nor by taking their time. Whatever leaves a block is logged in one line.
///
/// When the system has not one thread for a block, `async` throws `std::runtime_error`: who waited
/// for the block would wait for ever.
///
/// No thread is started before the first block. The last owner waits until all blocks have run,
/// unless the last owner is a block.
[[nodiscard]] std::shared_ptr<platform::Queue> make_thread_pool();

}  // namespace quoll::posix
