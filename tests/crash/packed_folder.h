#pragma once

#include <optional>
#include <set>
#include <string>

namespace quoll::crash {

/// Compares a ZIP file, as another reader finds it, with the folder that was packed into it.
/// Answers what lies in the folder and not in the file, as paths that begin with the folder's name,
/// without what lies in a folder that is missing itself. None when the file is not whole, or has
/// something that the folder does not have in that way.
[[nodiscard]] std::optional<std::set<std::string>> missing_of_zip(const std::string& zip,
                                                                  const std::string& folder);

}  // namespace quoll::crash
