#pragma once

#include <cstddef>
#include <string_view>

namespace quoll::links {

/// What the characters outside ASCII that no letter belongs to mean to a link.
enum class Mark {
  kNone,         ///< a letter or a sign; it may stand anywhere in an address
  kPunctuation,  ///< a dash, a full-width comma and the like: it stands in no host, maybe in a path
  kStop,         ///< white space or a quote: every link ends before it
};

struct MarkAt {
  Mark mark = Mark::kNone;
  std::size_t length = 0;  ///< in bytes; 0 when there is none
};

/// The mark that begins at `position`, which holds a byte above 0x7F. Bytes that are not UTF-8 are
/// no marks.
[[nodiscard]] MarkAt mark_at(std::string_view text, std::size_t position);

}  // namespace quoll::links
