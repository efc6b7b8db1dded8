#include "quoll/linux/posix/paths.h"

#include <algorithm>
#include <vector>

namespace quoll::posix {

bool is_usable_path(std::string_view path) {
  return !path.empty() && path.find('\0') == std::string_view::npos;
}

std::string normalised_path(std::string_view absolute) {
  std::vector<std::string_view> pieces;
  while (!absolute.empty()) {
    const std::string_view piece = absolute.substr(0, absolute.find('/'));
    absolute.remove_prefix(std::min(piece.size() + 1, absolute.size()));
    if (piece == "..") {
      if (!pieces.empty()) {
        pieces.pop_back();
      }
    } else if (!piece.empty() && piece != ".") {
      pieces.push_back(piece);
    }
  }
  std::string out;
  for (const std::string_view piece : pieces) {
    out.append("/").append(piece);
  }
  return out.empty() ? "/" : out;
}

bool ParentAndName::names_an_entry() const {
  return !name.empty() && name != "." && name != "..";
}

ParentAndName parent_and_name(std::string_view path) {
  while (path.ends_with('/')) {
    path.remove_suffix(1);
  }
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) {
    return {".", std::string(path)};
  }
  // The slash stays when it is the root's; "/tmp/" instead of "/tmp" does no harm.
  return {std::string(path.substr(0, slash + 1)), std::string(path.substr(slash + 1))};
}

}  // namespace quoll::posix
