// Gives any bytes to the reader of what a browser's extension says, a frame at each byte 0xFF. What
// comes of it names no file: only links of a few schemes, and pictures that begin as such.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "apps/share/request/browser_request.h"
#include "apps/share/request/image_signature.h"
#include "fuzz/require.h"
#include "quoll/foundation/text.h"

namespace {

using namespace quoll;
using fuzz::require;

bool leads_to_the_net(std::string_view link) {
  const std::string small = foundation::ascii_lower_case(link.substr(0, link.find(':')));
  return small == "http" || small == "https" || small == "ftp" || small == "mailto" ||
         small == "tel";
}

void check(share::ShareRequest request) {
  require(request.items.empty() && !request.has_list && !request.has_clipboard);
  require(request.envelope.to.empty() && request.envelope.cc.empty() &&
          request.envelope.bcc.empty());
  for (const std::string& link : request.links) {
    require(leads_to_the_net(link));
  }
  for (const auto* text : {&request.title, &request.text, &request.html}) {
    require(!*text || (foundation::is_utf8(**text) && **text != "-"));
    require(!*text || (*text)->find('\0') == std::string::npos);
  }
  for (const share::DescriptorItem& item : request.descriptor_items) {
    std::array<char, 16> begin{};
    const ssize_t size = pread(item.descriptor.get(), begin.data(), begin.size(), 0);
    require(size > 0 && item.name.empty());
    require(share::begins_as_image({begin.data(), static_cast<std::size_t>(size)}));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using Step = share::BrowserRequest::Step;
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  share::BrowserRequest request;
  for (Step step = Step::kMore; step == Step::kMore && !rest.empty();) {
    const std::string_view frame = rest.substr(0, rest.find('\xFF'));
    rest.remove_prefix(std::min(frame.size() + 1, rest.size()));
    step = request.take(frame);
    if (step == Step::kEnd) {
      check(request.request());
    }
  }
  return 0;
}
