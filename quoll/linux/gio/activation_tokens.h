#pragma once

#include <string>

namespace quoll::gio {

/// What a desktop gave this program so that the next one may come to the front. Empty when absent.
struct ActivationTokens {
  std::string activation;  ///< Wayland: XDG_ACTIVATION_TOKEN
  std::string startup;     ///< X11: DESKTOP_STARTUP_ID
};

/// Takes the tokens out of the environment, so that no other child of this program inherits them.
/// Only while the program has one thread.
[[nodiscard]] ActivationTokens take_activation_tokens();

}  // namespace quoll::gio
