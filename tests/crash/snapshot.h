#pragma once

#include <map>
#include <string>
#include <vector>

namespace quoll::crash {

/// What lies below a folder: each path with its kind, mode, size, times of change and bytes, in a
/// form that is compared.
using Snapshot = std::map<std::string, std::string>;

/// Of everything at and below `paths`, but what lies below one of `but`. Of a folder the mode only:
/// its times change with what lies in it.
[[nodiscard]] Snapshot snapshot(const std::vector<std::string>& paths,
                                const std::vector<std::string>& but = {});

/// The paths that are not the same in both.
[[nodiscard]] std::vector<std::string> differences(const Snapshot& before, const Snapshot& after);

/// The names in a folder; none when it is not there.
[[nodiscard]] std::vector<std::string> names_in(const std::string& folder);

}  // namespace quoll::crash
