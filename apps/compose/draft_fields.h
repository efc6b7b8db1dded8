#pragma once

#include <string>
#include <vector>

namespace quoll::compose {

/// What a mail client is told of a draft by its command line. All of it is UTF-8 without a control
/// character, `text` with line feeds and tabs only, and holds nothing that a client would decode.
struct DraftFields {
  std::string subject = {};                             ///< one line
  std::vector<std::string> to = {}, cc = {}, bcc = {};  ///< each one address, as people write it
  std::string text = {};                                ///< the plain text
};

}  // namespace quoll::compose
