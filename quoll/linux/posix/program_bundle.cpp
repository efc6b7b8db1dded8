#include "quoll/linux/posix/program_bundle.h"

#include <libintl.h>

#include <cstdlib>
#include <optional>
#include <utility>

#include "quoll/foundation/property_list.h"
#include "quoll/linux/posix/files.h"

namespace quoll::posix {

namespace {

using foundation::Dictionary;

constexpr const char* kCatalogue = "quoll-share";
constexpr std::string_view kIdentifier = "CFBundleIdentifier";

class ProgramBundle final : public platform::NSBundle {
 public:
  explicit ProgramBundle(Dictionary information) : information_(std::move(information)) {}

  Dictionary infoDictionary() const override { return information_.copy(); }

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
  Dictionary information_;
};

/// Never null.
Dictionary read_information(const std::string& file) {
  const auto contents = make_file_manager()->contentsAtPath(file);
  const auto* const bytes = std::get_if<foundation::Bytes>(&contents);
  const auto root = bytes != nullptr ? foundation::read_property_list(*bytes) : std::nullopt;
  const auto information = root ? root->as<Dictionary>() : nullptr;
  return information ? information : Dictionary();
}

}  // namespace

std::shared_ptr<platform::NSBundle> make_program_bundle(std::string identifier,
                                                        const std::string& information) {
  Dictionary known = read_information(information);
  if (const char* chosen = std::getenv("QUOLL_BUNDLE_IDENTIFIER")) {
    known.removeObjectForKey(kIdentifier);
    identifier = chosen;
  }
  if (!identifier.empty() && known.find(kIdentifier) == nullptr) {
    known.setObject(std::move(identifier), kIdentifier);
  }
  return std::make_shared<ProgramBundle>(known);
}

}  // namespace quoll::posix
