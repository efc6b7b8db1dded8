#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/object.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"
#include "quoll/records/addressable.h"

namespace quoll {

/// `ExtensionAlias`: one further sender identity of a mail account. A plain value holder; each
/// field is atomic by itself and holds whatever stood in the dictionary; absent is null.
class ExtensionAlias final : public foundation::Object, public Addressable {
 public:
  foundation::Property<foundation::Value> mail;
  foundation::Property<foundation::Value> name;
  /// As the dictionary names it; nobody compares it with the account that holds the alias.
  foundation::Property<foundation::Value> account;

  /// `initWithDictonary:`: the record filled from a dictionary with the fields' names as keys; an
  /// absent mail is the translation of "No Mail", other absent texts are empty. A null dictionary
  /// reads as an empty one. A failing reading is logged and the record is answered as far as it was
  /// filled; never null.
  [[nodiscard]] static std::shared_ptr<ExtensionAlias> initWithDictonary(
      const foundation::Value& dictionary);

  [[nodiscard]] foundation::Value address() const override { return mail(); }
  [[nodiscard]] std::string_view class_name() const override { return "ExtensionAlias"; }
  /// "ExtensionAlias %@" with `mail`.
  [[nodiscard]] std::string description() const override;
};

}  // namespace quoll
