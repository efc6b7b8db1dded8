#pragma once

#include <string>

#include "quoll/linux/gio/activation_tokens.h"

namespace quoll::gio {

enum class Choice {
  kOpened,
  kCancelled,   ///< by the person
  kNotOffered,  ///< the desktop lets nobody choose
};

/// Has the desktop ask the person which program shall open a file, and open it with that. Waits for
/// the person, for 5 minutes at the most: the question goes when this process ends. Runs the
/// default main context of this thread.
[[nodiscard]] Choice open_with_chosen_program(const std::string& path,
                                              const ActivationTokens& tokens);

}  // namespace quoll::gio
