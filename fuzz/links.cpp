// Finds links in any bytes. Each link is a URL without markup, the links are in order inside the
// text, and there are no more questions than bytes.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/linux/links/scanner.h"

namespace {

using quoll::fuzz::require;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::size_t asked = 0;
  const quoll::links::Questions questions{
      [&](std::string_view label) {
        ++asked;
        return label.size() % 2 == 1;
      },
      [&](std::string_view host) -> std::optional<std::string> {
        ++asked;
        return host.size() % 3 == 0 ? std::nullopt : std::optional<std::string>("a.xn--b");
      }};
  std::size_t end = 0;
  for (const auto& found : quoll::links::scan(text, questions)) {
    require(found.location >= end && found.length > 0);
    end = found.location + found.length;
    require(end <= size);
    require(quoll::foundation::NSURL::URLWithString(found.url) != nullptr);
    require(found.url.find(':') != std::string::npos);
    require(found.url.find_first_of("<>'") == std::string::npos);
  }
  require(asked <= size);
  return 0;
}
