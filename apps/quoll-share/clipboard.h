#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "quoll/host/select.h"

namespace quoll {

/// Adds what the clipboard holds to what is wanted: files and links before a picture, that before
/// styled text, that before plain text. Answers why there is nothing, in words that follow a colon;
/// none when there is something. `patience` is how long the program that holds it may be silent.
/// To be called while there is one thread.
[[nodiscard]] std::optional<std::string> add_clipboard(
    host::Wanted& wanted, std::chrono::milliseconds patience = std::chrono::seconds(5));

}  // namespace quoll
