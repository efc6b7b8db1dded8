#include "quoll/linux/links/links.h"

#include <libpsl.h>
#include <unicode/uidna.h>

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quoll/linux/links/scanner.h"

namespace quoll::links {

namespace {

/// Whether the public suffix list names this label. Its default rule, by which every unknown label
/// is a suffix, is left out.
bool is_top_level_domain(const std::string& label) {
  return psl_is_public_suffix2(psl_builtin(), label.c_str(),
                               PSL_TYPE_ICANN | PSL_TYPE_NO_STAR_RULE) != 0;
}

/// ICU's converter of host names. It is opened at the first use, shared by all threads, and never
/// closed. Null when ICU has no data for it.
const UIDNA* open_idna() {
  UErrorCode error = U_ZERO_ERROR;
  return uidna_openUTS46(UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_USE_STD3_RULES | UIDNA_CHECK_BIDI |
                             UIDNA_CHECK_CONTEXTJ,
                         &error);
}

std::optional<std::string> ascii_form(std::string_view host) {
  static const UIDNA* const idna = open_idna();
  std::array<char, 256> out{};
  UIDNAInfo info = UIDNA_INFO_INITIALIZER;
  UErrorCode error = U_ZERO_ERROR;
  if (idna == nullptr) {
    return std::nullopt;
  }
  const std::int32_t length =
      uidna_nameToASCII_UTF8(idna, host.data(), static_cast<std::int32_t>(host.size()), out.data(),
                             static_cast<std::int32_t>(out.size()), &info, &error);
  if (U_FAILURE(error) || info.errors != 0) {
    return std::nullopt;
  }
  return std::string(out.data(), static_cast<std::size_t>(length));
}

class FoundLinks final : public platform::Links {
 public:
  std::vector<std::string> find(std::string_view text) override {
    // Most texts repeat a few top-level domains, so the answers are kept.
    std::map<std::string, bool, std::less<>> known;
    const auto is_known = [&](std::string_view label) {
      auto entry = known.find(label);
      if (entry == known.end()) {
        const std::string name(label);
        entry = known.emplace(name, is_top_level_domain(name)).first;
      }
      return entry->second;
    };
    std::vector<std::string> urls;
    for (Found& link : scan(text, {is_known, ascii_form})) {
      urls.push_back(std::move(link.url));
    }
    return urls;
  }
};

}  // namespace

std::shared_ptr<platform::Links> make_links() {
  return std::make_shared<FoundLinks>();
}

}  // namespace quoll::links
