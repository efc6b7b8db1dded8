#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "apps/console/operations/json.h"

/// What commands write, and the exit status that follows from it.
namespace quoll::console {

/// Writes "quollctl: WHY" on standard error, in one line, and answers 1.
int complain(const std::string& why);

/// Writes one line of JSON on standard output.
void print_json(const Json& json);

/// Writes one line on standard output: a label, the blanks that it needs to fill the column, and a
/// text.
void print_line(std::string_view label, std::size_t column, std::string_view text);

/// The exit status: 0 when all went well and everything was written, else 1.
[[nodiscard]] int finish(bool all_went_well = true);

}  // namespace quoll::console
