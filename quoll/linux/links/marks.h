#pragma once

#include <cstddef>
#include <string_view>

namespace quoll::links {

/// What a character outside ASCII means for a link.
enum class Mark {
  kNone,         ///< a letter or symbol, which may stand anywhere in an address
  kPunctuation,  ///< such as a dash or a full-width comma: never in a host, maybe in a path
  kStop,         ///< white space or a quote: a link ends before it
};

struct MarkAt {
  Mark mark = Mark::kNone;
  std::size_t length = 0;  ///< in bytes; 0 when there is no mark
};

/// The mark that begins at `position`. The byte there must be above 0x7F. Bytes that are not UTF-8
/// are not marks.
[[nodiscard]] MarkAt mark_at(std::string_view text, std::size_t position);

}  // namespace quoll::links
