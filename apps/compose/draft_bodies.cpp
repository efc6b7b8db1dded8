#include "apps/compose/draft_bodies.h"

#include <utility>

#include "apps/compose/clean_text.h"
#include "quoll/linux/xml/mail_form.h"

namespace quoll::compose {

// The sender's HTML is a stranger's: what goes into a message is written anew. Its text is the
// HTML's too, or one person would read what another does not.
DraftBodies draft_bodies(const std::string& plain_body, const std::string& html_body) {
  if (html_body.empty()) {
    return {.text = with_line_feeds(plain_body), .html = {}};
  }
  xml::MailBodies bodies = xml::mail_bodies(html_body);
  return {.text = std::move(bodies.text), .html = std::move(bodies.html)};
}

}  // namespace quoll::compose
