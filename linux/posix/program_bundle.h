#pragma once

#include <memory>
#include <string>

#include "quoll/platform/bundle.h"

namespace quoll::posix {

/// The bundle of a program with that identifier, which is "CFBundleIdentifier". For development
/// `QUOLL_BUNDLE_IDENTIFIER` overrides it; set but empty, there is no identifier. The environment
/// is read by this call only.
///
/// Translations come from the message catalogue "quoll-share" of the user's language, as far as the
/// program has chosen a locale.
[[nodiscard]] std::shared_ptr<platform::NSBundle> make_program_bundle(std::string identifier);

}  // namespace quoll::posix
