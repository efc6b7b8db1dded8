#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quoll::compose {

/// Throws `ComposeError` when the disk has no room for message files of so many bytes beside those
/// of all drafts that wait, whoever took them. One thread at a time.
void require_room(std::uint64_t needed);

/// Why there will never be room for the draft in an open folder of taken drafts: it is larger than
/// the whole disk. None when there may be.
[[nodiscard]] std::optional<std::string> why_never(int taken_folder);

}  // namespace quoll::compose
