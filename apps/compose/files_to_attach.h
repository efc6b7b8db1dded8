#pragma once

#include <string>

#include "quoll/linux/gio/activation_tokens.h"

namespace quoll::compose {

/// Lays the files of a written draft into one folder, from which a person can attach them by hand:
/// as further names of the same files, so it takes no room. `with_text` adds its text, which lies
/// beside them. `folder` is the draft's open folder in `given`. Throws `ComposeError` or
/// `std::system_error`.
void lay_out_files(int folder, bool with_text);

/// The path of the folder in which the files of a draft were laid out; empty when they were not.
[[nodiscard]] std::string laid_out_files(const std::string& draft);

/// Lays out the files of a draft unless that was done, and shows them in the desktop's file
/// manager, selected. Throws `ComposeError` when they are in its message file only, or nothing can
/// show them.
void show_files(const std::string& draft, const gio::ActivationTokens& tokens);

}  // namespace quoll::compose
