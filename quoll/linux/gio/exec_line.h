#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quoll::gio {

/// An `Exec` line with these arguments instead of its files or URLs (`%f %F %u %U`), or with them
/// at the end when it takes none. Arguments are passed unchanged. Other field codes stay. The marks
/// around files for a sandbox (`@@ %f @@`, `@@u %u @@`) are removed, since the arguments are not a
/// list of files.
[[nodiscard]] std::string exec_line_with(std::string_view exec,
                                         const std::vector<std::string>& arguments);

}  // namespace quoll::gio
