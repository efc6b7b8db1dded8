#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quoll::console {

/// The copies of shared files that lie in the staging folder.
struct StagedCopies {
  std::string folder;  ///< empty when there is no place for one
  std::size_t files = 0;
  std::uintmax_t bytes = 0;
  std::string trouble{};  ///< why not all are counted; else empty
  std::string advice{};   ///< what to do about the trouble
};

/// Counts them and changes nothing. From the container down no link is followed. The desktop with
/// the share's bundle must be installed.
[[nodiscard]] StagedCopies staged_copies();

/// "2 files (12 KiB)".
[[nodiscard]] std::string in_words(const StagedCopies& copies);

}  // namespace quoll::console
