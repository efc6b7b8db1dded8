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
/// Translations come from the message catalogue "quoll-share" of the user's language below the
/// folder `catalogues`; when that is empty, below the system's. The user's language is that of
/// LANGUAGE, LC_ALL, LC_MESSAGES and LANG; with the locale "C", or one that the system has not,
/// there are no translations. The catalogue is read by this call, so the process may be confined
/// afterwards. The locale of the process stays as it is: the system's own messages, which go to the
/// log, are not translated.
[[nodiscard]] std::shared_ptr<platform::NSBundle> make_program_bundle(
    std::string identifier, const std::string& information = "",
    const std::string& catalogues = "");

}  // namespace quoll::posix
