#include "apps/compose/draft_bodies.h"

#include "apps/compose/clean_text.h"
#include "apps/compose/plain_text.h"

namespace quoll::compose {

DraftBodies draft_bodies(const std::string& plain_body, const std::string& html_body) {
  return {.text = with_line_feeds(plain_body.empty() ? plain_text_of_html(html_body) : plain_body),
          .html = with_line_feeds(html_body)};
}

}  // namespace quoll::compose
