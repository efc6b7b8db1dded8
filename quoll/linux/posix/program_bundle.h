#pragma once

#include <memory>
#include <string>

#include "quoll/platform/bundle.h"

namespace quoll::posix {

/// The bundle of a program: all that the property list in `information` says of it, when that is a
/// dictionary; no file is no information. What it does not say under "CFBundleIdentifier" is
/// `identifier`. For development `QUOLL_BUNDLE_IDENTIFIER` overrides both; set but empty, there is
/// no identifier. Environment and file are read by this call only.
///
/// Translations come from the message catalogue "quoll-share" of the user's language, as far as the
/// program has chosen a locale.
[[nodiscard]] std::shared_ptr<platform::NSBundle> make_program_bundle(
    std::string identifier, const std::string& information = "");

}  // namespace quoll::posix
