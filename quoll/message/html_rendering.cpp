#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/format.h"
#include "quoll/message/extension_message.h"
#include "quoll/message/link_anchors.h"
#include "quoll/platform/desktop.h"

namespace quoll {

namespace {

using foundation::Value;

/// The limit in bytes. There has to be one: each repeat of a link doubles the anchors of the links
/// before it.
constexpr std::size_t kLongestRendering = std::size_t{64} << 20U;

std::string with_line_breaks(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '\n') {
      out += "<br>";
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace

std::string ExtensionMessage::renderHtml() {
  const Value html = htmlBody();
  if (!html.is_null() && (html.length() != 0 || plainBody().length() == 0)) {
    std::string body = *html.stringValue();
    const auto lock = synchronized();
    for (const Value& attachment : attachments().copy()) {
      body += foundation::format("<img src=\"file://%@\"/><br/>", attachment);
    }
    htmlBody = body;
    return body;
  }
  const Value plain = plainBody();
  if (plain.length() == 0) {
    return {};
  }
  std::string body = with_line_breaks(*plain.stringValue());
  const auto links = searchUrlsDetector(body);
  if (const std::string* const left = anchor_links(body, links, kLongestRendering)) {
    platform::log("ExtensionMessage renderHtml stopped before %@: longer than 64 MiB", *left);
  }
  plainBody = body;
  return body;
}

std::vector<std::string> ExtensionMessage::searchUrlsDetector(std::string_view text) const {
  return platform::current_desktop()->links->find(text);
}

}  // namespace quoll
