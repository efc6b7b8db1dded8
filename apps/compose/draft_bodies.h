#pragma once

#include <string>

namespace quoll::compose {

/// What a draft says, in the forms of a message.
struct DraftBodies {
  std::string text;  ///< plain, with line feeds
  std::string html;  ///< empty when the draft has none
};

/// The bodies of a draft with these fields. One without a plain body gets the text of its HTML.
[[nodiscard]] DraftBodies draft_bodies(const std::string& plain_body, const std::string& html_body);

}  // namespace quoll::compose
