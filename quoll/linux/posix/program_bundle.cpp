#include "quoll/linux/posix/program_bundle.h"

#include <libintl.h>
#include <locale.h>  // NOLINT(modernize-deprecated-headers): `newlocale` is POSIX

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

/// The user's language, for the calls that are made with it.
class Language {
 public:
  Language() = default;
  Language(const Language&) = delete;
  Language& operator=(const Language&) = delete;
  ~Language() {
    if (locale_ != nullptr) {
      ::freelocale(locale_);
    }
  }

  /// The translation of a key; the very pointer that was given when there is none.
  [[nodiscard]] const char* translation(const char* key) const {
    if (locale_ == nullptr) {
      return key;
    }
    locale_t before = ::uselocale(locale_);
    const char* found = ::dgettext(kCatalogue, key);
    ::uselocale(before);
    return found;
  }

 private:
  locale_t locale_ = ::newlocale(LC_MESSAGES_MASK, "", nullptr);
};

class ProgramBundle final : public platform::NSBundle {
 public:
  explicit ProgramBundle(Dictionary information) : information_(std::move(information)) {
    // Reads the catalogue; the second text, which none has, those of the user's other languages.
    for (const char* text : {"No subject", "\x01"}) {
      static_cast<void>(language_.translation(text));
    }
  }

  Dictionary infoDictionary() const override { return information_.copy(); }

  std::string localizedStringForKey(std::string_view key, std::string_view value) const override {
    const std::string text(key);
    // The empty key would give the catalogue's header, one with a zero byte another key's text.
    if (!text.empty() && text.find('\0') == std::string::npos) {
      const char* translation = language_.translation(text.c_str());
      if (translation != text.c_str()) {
        return translation;
      }
    }
    return std::string(value.empty() || key.empty() ? key : value);
  }

 private:
  Dictionary information_;
  Language language_;
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
                                                        const std::string& information,
                                                        const std::string& catalogues) {
  if (!catalogues.empty()) {
    ::bindtextdomain(kCatalogue, catalogues.c_str());
  }
  ::bind_textdomain_codeset(kCatalogue, "UTF-8");
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
