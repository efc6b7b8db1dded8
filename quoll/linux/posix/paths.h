#pragma once

#include <string>
#include <string_view>

/// Paths as the kernel takes them. Nothing here looks at a disk.
namespace quoll::posix {

/// False for the empty path and for one with a zero byte, which the kernel would cut short.
[[nodiscard]] bool is_usable_path(std::string_view path);

/// An absolute path without ".", ".." and double slashes, taken by its text alone (links are not
/// looked at), and without a slash at the end but for "/".
[[nodiscard]] std::string normalised_path(std::string_view absolute);

/// `/a/b` and `/a/b/` are `/a` and `b`; `b` is `.` and `b`. The name is empty for "/" and for the
/// empty path.
struct ParentAndName {
  std::string parent;
  std::string name;

  /// False when the name is none that an entry of the parent can have ("", "." and "..").
  [[nodiscard]] bool names_an_entry() const;
};
[[nodiscard]] ParentAndName parent_and_name(std::string_view path);

}  // namespace quoll::posix
