#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "quoll/platform/extension_host.h"

namespace quoll::share {

/// The request of one share: what is shared, and how the extension ended the request. The first
/// ending counts; the items can still be asked for afterwards. Any thread may call.
class HostContext final : public platform::NSExtensionContext {
 public:
  explicit HostContext(Items items) : items_(std::move(items)) {}

  [[nodiscard]] Items inputItems() const override { return items_; }
  void completeRequestReturningItems(const Items& items,
                                     std::function<void(bool expired)> handler) override;
  void cancelRequestWithError(const foundation::Error& error) override;

  [[nodiscard]] bool is_ended() const;
  /// The error that the request was cancelled with; none when it was not cancelled.
  [[nodiscard]] std::optional<foundation::Error> cancellation() const;
  /// What the completed request gave back.
  [[nodiscard]] Items returned() const;

 private:
  Items items_;
  mutable std::mutex mutex_;
  bool is_ended_ = false;
  std::optional<foundation::Error> cancellation_;
  Items returned_;
};

}  // namespace quoll::share
