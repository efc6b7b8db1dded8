#pragma once

#include <cstddef>

namespace quoll::compose {

/// Lists of moments in the receiver's folder, which all its processes share.
enum class Moments {
  kOffers,       ///< a draft is about to be offered to a mail client
  kFloodsToldOf  ///< a person is told that so many drafts came
};

/// Notes that this happens now, unless it has happened `most` times in the last ten seconds: then
/// it answers false. Throws `ComposeError` when it cannot be noted, after a second at most.
[[nodiscard]] bool note_unless_frequent(Moments moments, std::size_t most);

/// Throws `ComposeError` when one of the lists cannot be used.
void try_moments();

}  // namespace quoll::compose
