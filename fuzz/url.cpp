// Takes any text apart as a URL. Every accessor answers, and a URL without escapes is built again
// as it was.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/require.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/requestutils/url_components.h"
#include "quoll/requestutils/url_editing.h"

namespace {

using quoll::foundation::NSURL;
using quoll::fuzz::require;
namespace Utils = quoll::RequestUtils;

/// Builds the URL from its components and takes it apart again. The components are the same, unless
/// an accessor changed them; what cannot be written back is skipped.
void build_again(const NSURL& url) {
  const auto components = Utils::components(url);
  const auto built = Utils::URLWithComponents(components);
  const std::string text = url.absoluteString();
  // A slash at the end of a path is lost; what stands before it may then look like parameters.
  const bool looks_alike = url.path().value_or("").find(';') != std::string::npos;
  const bool odd =
      looks_alike || text.find_first_of("%[]") != std::string::npos || !url.scheme() || !url.host();
  if (!odd) {
    require(built != nullptr);
    require(Utils::components(*built) == components);
    require(text.starts_with(built->absoluteString().substr(0, url.scheme()->size() + 3)));
  }
}

void resolve(std::string_view text, std::string_view base_text) {
  const auto base = NSURL::URLWithString(base_text);
  const auto url = NSURL::URLWithString(text, base);
  if (url && base) {
    require(url->relativeString() == text);
    // A resolved URL is a URL, and resolving it again changes only dots.
    const auto absolute = NSURL::URLWithString(url->absoluteString());
    require(absolute != nullptr || url->absoluteString().empty());
    require(url->isEqual(NSURL::URLWithString(text, base).get()));
  }
}

void edit(std::string_view text, std::string_view other) {
  try {
    const std::string whole = Utils::stringByDeletingURLFragment(text);
    require(whole.find('#') == std::string::npos);
    require(Utils::stringByAppendingURLFragment(whole, Utils::URLFragment(text)) == text);
    static_cast<void>(Utils::stringByAppendingURLPathComponent(text, other));
    static_cast<void>(Utils::stringByDeletingLastURLPathComponent(text));
    static_cast<void>(Utils::stringByAppendingURLPathExtension(text, other));
    static_cast<void>(Utils::stringByDeletingURLPathExtension(text));
    static_cast<void>(Utils::stringByReplacingURLQueryWithQuery(text, other));
    static_cast<void>(Utils::stringByMergingURLQuery(text, other));
  } catch (const quoll::foundation::NSException&) {
    // The query is out of range or does not decode.
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::size_t cut = text.find(' ');
  const std::string_view first = text.substr(0, cut);
  const std::string_view second = cut == std::string_view::npos ? "" : text.substr(cut + 1);
  if (const auto url = NSURL::URLWithString(first)) {
    build_again(*url);
    static_cast<void>(url->isFileURL());
    static_cast<void>(quoll::foundation::file_system_path(url));
  }
  resolve(first, second);
  edit(first, second);
  return 0;
}
