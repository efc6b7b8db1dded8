#include "apps/compose/noted_sizes.h"

#include <limits>
#include <sstream>
#include <string>

#include "apps/compose/small_file.h"

namespace quoll::compose {
namespace {

constexpr const char* kSizesFile = "sizes";

}  // namespace

int note_sizes(int folder, const NotedSizes& sizes) {
  std::string lines = std::to_string(sizes.message) + "\n";
  for (const std::uint64_t size : sizes.files) {
    lines += std::to_string(size) + "\n";
  }
  return write_small_file(folder, kSizesFile, lines);
}

NotedSizes noted_sizes(int folder) {
  NotedSizes sizes;
  std::string text;
  static_cast<void>(read_small_file(folder, kSizesFile, text));
  std::istringstream lines(text);
  lines >> sizes.message;
  for (std::uint64_t size = 0; lines >> size;) {
    sizes.files.push_back(size);
  }
  return sizes;
}

std::uint64_t sum_of(std::uint64_t one, std::uint64_t other) {
  std::uint64_t sum = 0;
  return __builtin_add_overflow(one, other, &sum) ? std::numeric_limits<std::uint64_t>::max() : sum;
}

}  // namespace quoll::compose
