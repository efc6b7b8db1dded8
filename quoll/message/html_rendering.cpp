#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/format.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/desktop.h"

namespace quoll {

namespace {

using foundation::Value;

/// Each repeat of a link doubles the anchors that the links before it made.
constexpr std::size_t kLongestRendering = std::size_t{64} << 20U;

/// Calls `found` with the position of each occurrence of `wanted`, none overlapping the one before.
/// The empty text occurs nowhere.
template <typename Found>
void for_each_occurrence(std::string_view text, std::string_view wanted, const Found& found) {
  if (wanted.empty()) {
    return;
  }
  const std::boyer_moore_horspool_searcher searcher(wanted.begin(), wanted.end());
  auto at = std::search(text.begin(), text.end(), searcher);
  while (at != text.end()) {
    found(static_cast<std::size_t>(at - text.begin()));
    at = std::search(at + static_cast<std::ptrdiff_t>(wanted.size()), text.end(), searcher);
  }
}

/// Replaces every occurrence of `wanted` by `substitute`, which is not shorter. False, and nothing
/// is replaced, when the text would become longer than `longest`.
bool replace_all(std::string& text, std::string_view wanted, std::string_view substitute,
                 std::size_t longest = std::string::npos) {
  std::size_t count = 0;
  for_each_occurrence(text, wanted, [&](std::size_t /*position*/) { ++count; });
  const std::size_t size = text.size() + count * (substitute.size() - wanted.size());
  if (count == 0) {
    return true;
  }
  if (size > longest) {
    return false;
  }
  std::string replaced;
  replaced.reserve(size);
  std::size_t copied = 0;
  for_each_occurrence(text, wanted, [&](std::size_t position) {
    replaced.append(text, copied, position - copied).append(substitute);
    copied = position + wanted.size();
  });
  replaced.append(text, copied);
  text = std::move(replaced);
  return true;
}

void anchor_links(std::string& text, const std::vector<std::string>& links) {
  for (const std::string& link : links) {
    if (!replace_all(text, link, foundation::format("<a href='%@'>%@</a>", link, link),
                     kLongestRendering)) {
      platform::log("ExtensionMessage renderHtml stopped before %@: too many repeats", link);
      return;
    }
  }
}

}  // namespace

std::string ExtensionMessage::renderHtml() {
  const Value html = htmlBody();
  if (!html.is_null() && (html.length() != 0 || plainBody().length() == 0)) {
    std::string body = *html.string();
    const auto lock = synchronized();
    for (const Value& attachment : Value(attachments()).list()) {
      body += foundation::format("<img src=\"file://%@\"/><br/>", attachment);
    }
    htmlBody = body;
    return body;
  }
  const Value plain = plainBody();
  if (plain.length() == 0) {
    return {};
  }
  std::string body = *plain.string();
  replace_all(body, "\n", "<br>");
  anchor_links(body, searchUrlsDetector(body));
  plainBody = body;
  return body;
}

std::vector<std::string> ExtensionMessage::searchUrlsDetector(std::string_view text) const {
  return platform::current_desktop()->links->find(text);
}

}  // namespace quoll
