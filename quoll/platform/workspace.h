#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/polymorphic.h"

namespace quoll::platform {

/// `NSWorkspaceLaunchOptions`: the two that an extension gives.
enum NSWorkspaceLaunchOptions : unsigned {
  NSWorkspaceLaunchWithoutActivation = 0x200,         ///< 512: it stays in the background
  NSWorkspaceLaunchAllowingClassicStartup = 0x20000,  ///< 131072: a normal open, to the front
};

/// What opens URLs with applications. Any thread may call.
class NSWorkspace : public foundation::Polymorphic {
 public:
  /// Never null.
  [[nodiscard]] static std::shared_ptr<NSWorkspace> sharedWorkspace();

  /// `openURLs:withAppBundleIdentifier:options:additionalEventParamDescriptor:launchIdentifiers:`
  /// without a descriptor and without launch identifiers: hands the URLs to the application with
  /// that identifier, starting it when it does not run, and waits until it has taken them. It comes
  /// to the front but with `NSWorkspaceLaunchWithoutActivation`. False when no such application is
  /// installed, when it did not answer in time, or when the URLs cannot be handed over, as a null
  /// one cannot; then the log says why, in an event with a `kNotOpenedError`.
  virtual bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                        std::string_view application, NSWorkspaceLaunchOptions options) = 0;
};

}  // namespace quoll::platform
