// Encodes any text and decodes it again. The parameters of a query are composed and parsed again as
// they were. A command URL of any text gives a message or raises.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/percent.h"
#include "quoll/foundation/text.h"
#include "quoll/message/extension_message.h"
#include "quoll/requestutils/url_query.h"

namespace {

using quoll::fuzz::require;
namespace RequestUtils = quoll::RequestUtils;
using quoll::foundation::NSException;
using quoll::foundation::Value;

void check_codec(std::string_view text) {
  const std::string encoded = quoll::foundation::percent_encode(text);
  require(quoll::foundation::percent_decode_bytes(encoded) == text);
  require(quoll::foundation::percent_decode(encoded).has_value() ==
          quoll::foundation::is_utf8(text));
}

void check_query(std::string_view text, RequestUtils::URLQueryOptions options) {
  const auto parameters = RequestUtils::URLQueryParametersWithOptions(text, options);
  if (parameters.empty()) {
    return;
  }
  // Brackets at the end of a key mark a list, so they come back only in that mode.
  const std::string query = RequestUtils::URLQueryWithParameters(parameters, options);
  const auto again = RequestUtils::URLQueryParametersWithOptions("?" + query, options);
  for (const auto& entry : parameters) {
    const bool is_plain = !entry.key.ends_with("[]");
    require(!is_plain || again.find(entry.key) != nullptr);
  }
  if ((options & RequestUtils::URLQueryBracketArrayKeys) != 0) {
    return;
  }
  for (const auto& entry : parameters) {
    if (const std::string* value = entry.value.text();
        value != nullptr && !entry.key.ends_with("[]") &&
        parameters.find(entry.key + "[]") == nullptr) {
      const Value* const back = again.find(entry.key);
      require(back->text() == nullptr || *back->text() == *value);
    }
  }
}

void check_message(std::string_view text) {
  const auto url = quoll::foundation::NSURL::URLWithString(text);
  if (url) {
    require(quoll::ExtensionMessage::ExtensionMessageWithUrl(url)->to().empty());
  }
}

template <typename Check>
void raising_is_fine(const Check& check) {
  try {
    check();
  } catch (const NSException&) {
    return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  check_codec(text);
  for (unsigned options = 0; options < 16; ++options) {
    raising_is_fine(
        [&] { check_query(text, static_cast<RequestUtils::URLQueryOptions>(options)); });
  }
  raising_is_fine([&] { check_message(text); });
  return 0;
}
