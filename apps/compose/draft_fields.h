#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quoll::compose {

/// What a mail client is told of a draft by its command line. All of it is UTF-8 without a control
/// character, `text` with line feeds and tabs only, and holds nothing that a client would decode.
struct DraftFields {
  std::string subject = {};                             ///< one line
  std::vector<std::string> to = {}, cc = {}, bcc = {};  ///< each as `is_plain_address` says
  std::size_t not_plain = 0;                            ///< recipients beside these
  std::string text = {};                                ///< the plain text
};

}  // namespace quoll::compose
