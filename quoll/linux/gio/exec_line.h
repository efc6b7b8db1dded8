#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quoll::gio {

/// The `Exec` line of a desktop entry with these arguments, each as it is, where the line takes
/// files or URLs (`%f %F %u %U`), or at the end when it takes none. Its other field codes stay. The
/// marks by which a sandbox is told what to pass on (`@@ %f @@`, `@@u %u @@`) go: the arguments are
/// no list of files.
[[nodiscard]] std::string exec_line_with(std::string_view exec,
                                         const std::vector<std::string>& arguments);

}  // namespace quoll::gio
