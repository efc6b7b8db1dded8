#pragma once

#include <string>

/// What this program does. Each answers the exit status.
namespace quoll::quollctl {

/// Answers the requests on standard input, one a line; 1 when any was raised or refused.
[[nodiscard]] int call();

/// Prints what a command URL says, for people or as JSON; 1 when the text is not a command URL.
[[nodiscard]] int show(const std::string& text, bool as_json);

}  // namespace quoll::quollctl
