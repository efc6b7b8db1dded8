#include "quoll/linux/gio/open_request.h"

#include <cstddef>
#include <iterator>

#include "quoll/foundation/text.h"

namespace quoll::gio {
namespace {

// A list in a bus message holds at most 64 MiB. Each text in it takes 4 bytes for its length, 1 for
// a zero byte at its end, and up to 3 to align it.
constexpr std::size_t kLargestBusList = std::size_t{64} << 20U;
constexpr std::size_t kBytesAroundAText = 4 + 1 + 3;

constexpr const char* kBackground = "background";
constexpr const char* kForeground = "foreground";

}  // namespace

std::vector<std::string> OpenRequest::fields() const {
  std::vector<std::string> fields{application, background ? kBackground : kForeground};
  fields.insert(fields.end(), urls.begin(), urls.end());
  return fields;
}

std::optional<OpenRequest> OpenRequest::from_fields(std::vector<std::string> fields) {
  if (fields.size() < 2) {
    return std::nullopt;
  }
  return OpenRequest{
      .application = std::move(fields[0]),
      .background = fields[1] == kBackground,
      .urls = {std::make_move_iterator(fields.begin() + 2), std::make_move_iterator(fields.end())}};
}

std::optional<OpenResult> refusal(const OpenRequest& request) {
  if (request.urls.empty()) {
    return OpenResult{"there is nothing to open"};
  }
  std::size_t size = 0;
  for (const auto& url : request.urls) {
    if (url.empty() || url.find('\0') != std::string::npos || !foundation::is_utf8(url)) {
      return OpenResult{"a URL is empty, is not UTF-8 or holds a zero byte"};
    }
    size += url.size() + kBytesAroundAText;
  }
  if (size >= kLargestBusList) {
    return OpenResult{.failure = "it is too long: less than 64 MiB can be handed over",
                      .advice = kShorten};
  }
  return std::nullopt;
}

}  // namespace quoll::gio
