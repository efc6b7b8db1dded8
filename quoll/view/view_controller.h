#pragma once

#include <memory>
#include <string>

#include "quoll/foundation/polymorphic.h"
#include "quoll/platform/extension_host.h"
#include "quoll/view/view.h"

namespace quoll::platform {

/// `NSViewController`: makes its view when it is asked for it for the first time. It belongs to the
/// thread that asks.
class NSViewController : public foundation::Polymorphic {
 public:
  /// The name of an interface file. It can only be read; no file is loaded.
  [[nodiscard]] virtual std::string nibName() const { return {}; }
  /// Makes an empty view.
  virtual void loadView() { view_ = std::make_shared<NSView>(); }
  virtual void viewDidLoad() {}

  /// The view; the first call loads it (`loadView`, then `viewDidLoad`).
  std::shared_ptr<NSView> view();

  /// The request that this controller serves, set by the host before it asks for the view.
  [[nodiscard]] std::shared_ptr<NSExtensionContext> extensionContext() const { return context_; }
  void set_extension_context(std::shared_ptr<NSExtensionContext> context) {
    context_ = std::move(context);
  }

 private:
  std::shared_ptr<NSView> view_;
  std::shared_ptr<NSExtensionContext> context_;
};

}  // namespace quoll::platform
