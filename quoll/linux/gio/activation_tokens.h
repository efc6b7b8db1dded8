#pragma once

#include <string>

namespace quoll::gio {

/// The tokens by which the desktop lets an application come to the front. The desktop gave them to
/// this program, which passes them on. Empty when absent.
struct ActivationTokens {
  std::string activation;  ///< Wayland: XDG_ACTIVATION_TOKEN
  std::string startup;     ///< X11: DESKTOP_STARTUP_ID
};

/// Reads the tokens and removes them from the environment, so that no other child of this program
/// inherits them. Call it only while the program has one thread.
[[nodiscard]] ActivationTokens take_activation_tokens();

}  // namespace quoll::gio
