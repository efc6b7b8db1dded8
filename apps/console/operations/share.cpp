#include <chrono>
#include <future>
#include <memory>
#include <utility>

#include "apps/console/operations/arguments.h"
#include "apps/console/operations/described_context.h"
#include "apps/console/operations/operation.h"
#include "quoll/share/item_gatherer.h"

namespace quoll::console {

namespace {

using foundation::Value;
using Moment = std::chrono::steady_clock::time_point;

struct Completed {
  std::shared_ptr<ExtensionMessage> message;
  Moment at;
};

/// Starts gathering and waits for the completion. When the block that would call it was dropped, as
/// on a desktop without a queue, the request is refused.
Value gather(Call& call) {
  auto context = object_argument<DescribedContext>(call.arguments[0]);
  if (!context) {
    context = std::make_shared<DescribedContext>(platform::NSExtensionContext::Items{});
  }
  auto promise = std::make_shared<std::promise<Completed>>();
  std::future<Completed> completed = promise->get_future();
  const Moment start = std::chrono::steady_clock::now();
  ExtensionUtilities::GetItemForExtension(
      std::move(context), text_argument(call.arguments[1]),
      [promise = std::move(promise)](const std::shared_ptr<ExtensionMessage>& message,
                                     const std::optional<foundation::Error>& /*error*/) {
        promise->set_value({message, std::chrono::steady_clock::now()});
      });
  try {
    const Completed done = completed.get();
    call.seconds = std::chrono::duration<double>(done.at - start).count();
    return done.message;
  } catch (const std::future_error&) {
    throw Refused("the completion was never called");
  }
}

}  // namespace

std::vector<Operation> share_operations() {
  return {{"GetItemForExtension:service:completion:", "ExtensionUtilities",
           Operation::Level::kClass, 2, gather}};
}

}  // namespace quoll::console
