#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/object.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"

namespace quoll {

/// `ExtensionGroup`: a named group of addresses. A plain value holder; each field is atomic by
/// itself.
class ExtensionGroup final : public foundation::Object {
 public:
  /// An identifier kept as text.
  foundation::Property<foundation::Value> idx;
  foundation::Property<foundation::Value> name;
  /// Of `ExtensionAddress`; null until it is set or read from a dictionary.
  foundation::Property<std::shared_ptr<foundation::List>> addresses;

  /// `initWithDictonary:`: the record filled from a dictionary with the fields' names as keys; an
  /// absent idx is empty, an absent name the translation of "No Name", absent addresses are an
  /// empty list. Each element under "addresses" becomes one record, in order. See
  /// `ExtensionAddress` for failures; never null.
  [[nodiscard]] static std::shared_ptr<ExtensionGroup> initWithDictonary(
      const foundation::Value& dictionary);

  /// `prettyprint`: "%@ (%@)" with the name and the number of addresses when there are any, else
  /// the name alone.
  [[nodiscard]] std::string prettyprint() const;

  [[nodiscard]] std::string_view class_name() const override { return "ExtensionGroup"; }
  /// "ExtensionGroup %@" with `name`.
  [[nodiscard]] std::string description() const override;
};

}  // namespace quoll
