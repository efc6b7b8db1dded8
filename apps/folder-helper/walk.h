#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quoll::folder_helper {

/// How much may be packed. A folder inside `depth` others is left out.
inline constexpr std::size_t kMostEntries = 100'000;
inline constexpr std::uint64_t kMostBytes = std::uint64_t{4} << 30;
inline constexpr std::size_t kDepth = 128;

/// Why a folder cannot be packed, in words that follow a colon.
class PackError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Gets what lies in a folder, in order. A path begins with the name of the folder and is UTF-8.
class Visitor {
 public:
  Visitor() = default;
  Visitor(const Visitor&) = delete;
  Visitor& operator=(const Visitor&) = delete;
  virtual ~Visitor() = default;

  virtual void folder(const std::string& path, const struct stat& status) = 0;
  /// A regular file of that name in the folder `parent`, as it was a moment ago.
  virtual void file(const std::string& path, const struct stat& status, int parent,
                    const char* name) = 0;
  /// Something that is not packed, and why, in words that follow a colon. The path may be any
  /// bytes.
  virtual void left_out(const std::string& path, std::string_view why) = 0;
};

/// Visits all below the open folder, sorted by the bytes of the names, a folder before what is in
/// it. Symbolic links are not followed, and nothing but folders is opened. The file `output` is
/// passed over. Throws `PackError` when there is more than may be packed, or no memory for it.
void walk(int folder, const std::string& name, const struct stat& output, Visitor& visitor);

}  // namespace quoll::folder_helper
