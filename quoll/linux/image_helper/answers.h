#pragma once

#include <cstdint>

namespace quoll::image_helper {

/// The helper's answer to "size", as it lies in memory: both ends are of one build.
struct SizeAnswer {
  std::int64_t width = 0;
  std::int64_t height = 0;
};

/// The longest file that the helper may give, in bytes.
inline constexpr std::uint64_t kLongestResult = std::uint64_t{1} << 30;

}  // namespace quoll::image_helper
