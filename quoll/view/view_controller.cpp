#include "quoll/view/view_controller.h"

namespace quoll::platform {

std::shared_ptr<NSView> NSViewController::view() {
  if (!view_) {
    loadView();
    viewDidLoad();
  }
  return view_;
}

}  // namespace quoll::platform
