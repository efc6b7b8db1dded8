#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "quoll/foundation/nsurl.h"

namespace quoll::platform {

/// What opens URLs with applications. Any thread may call.
class NSWorkspace {
 public:
  NSWorkspace() = default;
  NSWorkspace(const NSWorkspace&) = delete;
  NSWorkspace& operator=(const NSWorkspace&) = delete;
  virtual ~NSWorkspace() = default;

  /// Never null.
  [[nodiscard]] static std::shared_ptr<NSWorkspace> sharedWorkspace();

  /// `openURLs:withAppBundleIdentifier:options:additionalEventParamDescriptor:launchIdentifiers:`
  /// without a descriptor and without launch identifiers: hands the URLs to the application with
  /// that identifier, starting it when it does not run, and waits until it has taken them. Option
  /// 512 leaves it in the background, 131072 brings it to the front. False when no such application
  /// is installed, when it did not answer in time, or when the URLs cannot be handed over; then the
  /// log says why.
  virtual bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                        std::string_view application, unsigned options) = 0;
};

}  // namespace quoll::platform
