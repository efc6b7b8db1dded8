// Marks up links in any bytes. The fast way gives the same as the rule applied step by step. The
// first line of the input has the links, separated by blanks; the rest is the text.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/message/link_anchors.h"

namespace {

constexpr std::size_t kLongest = 1 << 16;

std::vector<std::string> words_of(std::string_view line) {
  std::vector<std::string> words;
  while (!line.empty()) {
    const std::size_t end = std::min(line.find(' '), line.size());
    if (end > 0) {
      words.emplace_back(line.substr(0, end));
    }
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  return words;
}

std::string replaced(const std::string& text, const std::string& link) {
  const std::string anchor =
      std::string("<a href='").append(link).append("'>").append(link).append("</a>");
  std::string out;
  std::size_t copied = 0;
  for (std::size_t at = text.find(link); at != std::string::npos; at = text.find(link, copied)) {
    out.append(text, copied, at - copied).append(anchor);
    copied = at + link.size();
  }
  return out.append(text, copied);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t line = std::min(input.find('\n'), size);
  const std::vector<std::string> links = words_of(input.substr(0, line));
  const std::string text(input.substr(line));

  std::string by_rule = text;
  std::size_t done = 0;
  while (done < links.size()) {
    std::string next = replaced(by_rule, links[done]);
    if (next.size() > kLongest) {
      break;
    }
    by_rule = std::move(next);
    ++done;
  }
  std::string fast = text;
  const std::string* const left = quoll::anchor_links(fast, links, kLongest);
  if (fast != by_rule || left != (done < links.size() ? &links[done] : nullptr)) {
    std::abort();
  }
  return 0;
}
