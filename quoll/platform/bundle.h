#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/polymorphic.h"

namespace quoll::platform {

/// The running program as the platform knows it: its information dictionary and its translations.
/// Any thread may ask.
class NSBundle : public foundation::Polymorphic {
 public:
  /// The bundle of the running program; never null.
  [[nodiscard]] static std::shared_ptr<NSBundle> mainBundle();

  /// "CFBundleIdentifier" among other keys, each absent when it is not known; never null.
  [[nodiscard]] virtual foundation::Dictionary infoDictionary() const = 0;

  /// `localizedStringForKey:value:table:` with the default table: the translation of `key`; without
  /// one `value`, and when that is empty the key itself. The empty key gives the empty text.
  [[nodiscard]] virtual std::string localizedStringForKey(std::string_view key,
                                                          std::string_view value) const = 0;
};

/// The value under "CFBundleIdentifier" of the main bundle, null when it has none.
[[nodiscard]] foundation::Value main_bundle_identifier();

}  // namespace quoll::platform
