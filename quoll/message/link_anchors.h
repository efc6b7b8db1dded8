#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quoll {

/// Replaces each of the links in turn, wherever it stands in the text by then, by
/// "<a href='LINK'>LINK</a>": also in the anchors that the links before it made, and once more for
/// each repeat in the list. Stops for good before the link that would make the text longer than
/// `longest`, and answers that one; null when all are done. A text that is longer from the start
/// stays as it is. The text is raw bytes; the answer points into `links`.
///
/// Links with a colon and without "<", ">" and "'", which is how a finder writes them, take time
/// that grows with the lengths of the text, of the links and of the result, whatever stands in
/// them. Others are replaced one by one, each by a walk over all of the text.
[[gnu::visibility("hidden")]] const std::string* anchor_links(std::string& text,
                                                              const std::vector<std::string>& links,
                                                              std::size_t longest);

}  // namespace quoll
