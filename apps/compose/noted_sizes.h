#pragma once

#include <cstdint>
#include <vector>

namespace quoll::compose {

/// How large a draft is, noted in the file `sizes` of its folder before it is promised. Whoever had
/// a staged file open may let it grow afterwards; what is noted stays.
struct NotedSizes {
  std::uint64_t message = 0;         ///< what its message file has at the most, in bytes
  std::vector<std::uint64_t> files;  ///< what its K-th file had, in bytes
};

/// Answers 0 or an `errno` value.
[[nodiscard]] int note_sizes(int folder, const NotedSizes& sizes);

/// What is noted in an open folder; zero and no files when it cannot be read.
[[nodiscard]] NotedSizes noted_sizes(int folder);

/// The sum of sizes, which are a stranger's; the largest number when they have no sum.
[[nodiscard]] std::uint64_t sum_of(std::uint64_t one, std::uint64_t other);

}  // namespace quoll::compose
