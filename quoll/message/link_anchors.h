#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quoll {

/// Replaces every occurrence of each link by "<a href='LINK'>LINK</a>". The links are replaced one
/// after the other, so a link is also replaced inside the anchors that earlier links made, and
/// again for each time that it stands in the list.
///
/// It stops before the first link that would make the text longer than `longest` bytes, and answers
/// a pointer to that link in `links`; null when all were replaced. A text that is longer than
/// `longest` at the start is not changed. The text may hold any bytes.
///
/// When every link has a colon and no "<", ">" or "'" (as the links that a finder answers do), the
/// time grows with the lengths of the text, the links and the result, whatever they hold. Otherwise
/// each link takes one pass over the whole text.
[[gnu::visibility("hidden")]] const std::string* anchor_links(std::string& text,
                                                              const std::vector<std::string>& links,
                                                              std::size_t longest);

}  // namespace quoll
