#pragma once

#include <string>
#include <vector>

namespace quoll::compose {

/// What a mail client is told of a draft on its command line. Plain and checked: all of it is valid
/// UTF-8 without any control character; only `text` has line feeds and tabs.
struct DraftFields {
  std::string subject;
  std::vector<std::string> to, cc, bcc;  ///< an address each, as people write it
  std::string text;
};

}  // namespace quoll::compose
