#include "linux/posix/program_bundle.h"

#include <libintl.h>

#include <cstdlib>
#include <utility>

namespace quoll::posix {

namespace {

constexpr const char* kCatalogue = "quoll-share";

class ProgramBundle final : public platform::NSBundle {
 public:
  explicit ProgramBundle(std::string identifier) : identifier_(std::move(identifier)) {}

  std::shared_ptr<foundation::Dictionary> infoDictionary() const override {
    auto dictionary = std::make_shared<foundation::Dictionary>();
    if (!identifier_.empty()) {
      dictionary->setObject(identifier_, "CFBundleIdentifier");
    }
    return dictionary;
  }

  std::string localizedStringForKey(std::string_view key, std::string_view value) const override {
    const std::string text(key);
    // The empty key would give the catalogue's header, one with a zero byte another key's text.
    if (!text.empty() && text.find('\0') == std::string::npos) {
      const char* translation = ::dgettext(kCatalogue, text.c_str());
      if (translation != text.c_str()) {
        return translation;
      }
    }
    return std::string(value.empty() || key.empty() ? key : value);
  }

 private:
  std::string identifier_;
};

}  // namespace

std::shared_ptr<platform::NSBundle> make_program_bundle(std::string identifier) {
  if (const char* chosen = std::getenv("QUOLL_BUNDLE_IDENTIFIER")) {
    identifier = chosen;
  }
  return std::make_shared<ProgramBundle>(std::move(identifier));
}

}  // namespace quoll::posix
