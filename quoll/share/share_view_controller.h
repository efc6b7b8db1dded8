#pragma once

#include <memory>
#include <optional>
#include <string>

#include "quoll/foundation/error.h"
#include "quoll/message/extension_message.h"
#include "quoll/view/view_controller.h"

namespace quoll {

/// `ShareViewController`: the share extension. The host makes it, gives it the request and asks for
/// its view, on one thread; everything else follows from that.
///
/// It shows nothing. It cancels the request at once, so that the share sheet closes, and goes on
/// with the shared items on the background queue, where it ends by opening the mail application's
/// compose window. The work does not need the controller any more.
class ShareViewController final : public platform::NSViewController {
 public:
  /// "ShareViewController".
  [[nodiscard]] std::string nibName() const override;
  void loadView() override;
  void viewDidLoad() override;

  /// `send:`, the action of the send button: completes the request with one empty item. The sender
  /// is ignored, here and below; it may be null.
  void send(const std::shared_ptr<foundation::Object>& sender);
  /// `cancel:`, the action of the cancel button: cancels the request as the user would.
  void cancel(const std::shared_ptr<foundation::Object>& sender);

  /// What becomes of the gathered message: its compose URL is opened in the foreground. An error is
  /// logged as "ShareFull %@" and ends the share; so does, silently, a missing message or URL.
  static void open_compose_window(const std::shared_ptr<ExtensionMessage>& message,
                                  const std::optional<foundation::Error>& error);
};

}  // namespace quoll
