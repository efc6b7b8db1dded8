#include "apps/compose/draft_bodies.h"

#include <utility>

#include "apps/compose/clean_text.h"
#include "quoll/linux/xml/mail_form.h"

namespace quoll::compose {

// The sender's HTML is a stranger's: what goes into a message is written anew.
DraftBodies draft_bodies(const std::string& plain_body, const std::string& html_body) {
  xml::MailBodies bodies = html_body.empty() ? xml::MailBodies() : xml::mail_bodies(html_body);
  return {.text = plain_body.empty() ? std::move(bodies.text) : with_line_feeds(plain_body),
          .html = std::move(bodies.html)};
}

}  // namespace quoll::compose
