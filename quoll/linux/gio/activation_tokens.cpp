#include "quoll/linux/gio/activation_tokens.h"

#include <cstdlib>

namespace quoll::gio {
namespace {

std::string take(const char* variable) {
  const char* value = std::getenv(variable);
  std::string taken = value != nullptr ? value : "";
  unsetenv(variable);
  return taken;
}

}  // namespace

ActivationTokens take_activation_tokens() {
  return {.activation = take("XDG_ACTIVATION_TOKEN"), .startup = take("DESKTOP_STARTUP_ID")};
}

}  // namespace quoll::gio
