#pragma once

#include <string>

namespace quoll::compose {

/// Notes why a draft waits or is kept, in its folder (of those that were taken or given), in place
/// of what is noted there. When it cannot be noted, nothing is, and no draft is worse off.
void note_reason(const std::string& folder, const std::string& reason);

/// What is noted in a draft's folder; empty when nothing is.
[[nodiscard]] std::string noted_reason(const std::string& folder);

}  // namespace quoll::compose
