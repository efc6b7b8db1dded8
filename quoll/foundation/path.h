#pragma once

#include <string>
#include <string_view>

/// File paths as text. Trailing slashes are ignored; "/" stays "/". Nothing here looks at a disk.
namespace quoll::foundation {

/// What follows the last "/": `/tmp/a.txt` and `/tmp/a.txt/` give `a.txt`; `/` gives `/`. The
/// result points into `path`.
[[nodiscard]] std::string_view last_path_component(std::string_view path);

/// What follows the last "." of the last component. A name whose only dot is its first character
/// has none; neither have `a.`, `.` and `..`. The result points into `path`.
[[nodiscard]] std::string_view path_extension(std::string_view path);

/// The path without its extension and the dot before it, when it has one, and without trailing
/// slashes.
[[nodiscard]] std::string deleting_path_extension(std::string_view path);

/// Joins with "."; an empty extension, or an empty path, changes nothing.
[[nodiscard]] std::string appending_path_extension(std::string_view path,
                                                   std::string_view extension);

/// Joins with exactly one "/"; an empty component changes nothing.
[[nodiscard]] std::string appending_path_component(std::string_view path,
                                                   std::string_view component);

/// True for a path that begins with "/" or "~".
[[nodiscard]] bool is_absolute_path(std::string_view path);

}  // namespace quoll::foundation
