#include "quoll/linux/xml/allowed_link.h"

#include <algorithm>
#include <array>

#include "quoll/foundation/text.h"
#include "quoll/linux/xml/css.h"
#include "quoll/linux/xml/markup.h"

namespace quoll::xml {
namespace {

constexpr std::size_t kLongestLink = 8192;
constexpr std::array<std::string_view, 5> kLinkSchemes{"http", "https", "mailto", "ftp", "tel"};
constexpr std::array<std::string_view, 1> kSourceSchemes{"cid"};

template <typename Schemes>
std::string with_scheme(std::string_view text, const Schemes& schemes) {
  std::string link;
  without_controls(text, [&link](std::string_view piece) { link += piece; });
  std::erase(link, '\t');
  link = std::string(trim_ascii(link));
  const std::string scheme = foundation::ascii_lower_case(link.substr(0, link.find(':')));
  const bool allowed = scheme.size() < link.size() && link.size() <= kLongestLink &&
                       std::ranges::find(schemes, scheme) != schemes.end();
  return allowed ? link : std::string();
}

}  // namespace

std::string allowed_link(std::string_view href) {
  return with_scheme(href, kLinkSchemes);
}

std::string allowed_source(std::string_view source) {
  return with_scheme(source, kSourceSchemes);
}

}  // namespace quoll::xml
