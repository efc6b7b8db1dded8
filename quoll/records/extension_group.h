#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/object.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"

namespace quoll {

/// `ExtensionGroup`: a named group of addresses. It only holds values. Each field is atomic. A
/// field that was never set is null.
class ExtensionGroup final : public foundation::Object {
 public:
  /// The group's identifier, as a text.
  foundation::Property<foundation::Value> idx;
  foundation::Property<foundation::Value> name;
  /// A list of `ExtensionAddress`; null until it is set or read from a dictionary.
  foundation::Property<foundation::List> addresses{nullptr};

  explicit ExtensionGroup(foundation::Passkey<ExtensionGroup> /*key*/) {}

  /// The factory `new`: nothing is set.
  [[nodiscard]] static std::shared_ptr<ExtensionGroup> make();

  /// `initWithDictonary:`: a record filled from a dictionary whose keys are the names of the
  /// fields; never null. An absent idx is the empty text, an absent name the translation of "No
  /// Name", absent addresses an empty list. Each element under "addresses" becomes one record, in
  /// order. A null dictionary is read as an empty one. A failure is logged and ends the reading;
  /// the record keeps what was filled until then.
  [[nodiscard]] static std::shared_ptr<ExtensionGroup> initWithDictonary(
      const foundation::Value& dictionary);

  /// `prettyprint`: the name and the number of addresses as "NAME (COUNT)", or the name alone when
  /// there are no addresses.
  [[nodiscard]] std::string prettyprint() const;

  [[nodiscard]] std::string_view class_name() const override { return "ExtensionGroup"; }
  /// "ExtensionGroup %@" with `name`.
  [[nodiscard]] std::string description() const override;
};

}  // namespace quoll
