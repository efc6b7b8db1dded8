#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/collections.h"
#include "quoll/foundation/object.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"
#include "quoll/records/addressable.h"

namespace quoll {

/// `ExtensionAccount`: one mail account of the mail application. A plain value holder; each field
/// is atomic by itself. Fields that come from dictionaries hold whatever stood there; absent is
/// null.
class ExtensionAccount final : public foundation::Object, public Addressable {
 public:
  foundation::Property<foundation::Value> mail;
  foundation::Property<foundation::Value> name;
  /// Of `ExtensionAlias`; null until it is set or read from a dictionary.
  foundation::Property<std::shared_ptr<foundation::List>> aliases;
  /// The application's code for the kind of account; no value of it means anything here.
  foundation::Property<std::int64_t> type;
  foundation::Property<bool> enabled;

  /// `initWithDictonary:`: the record filled from a dictionary with the fields' names as keys; an
  /// absent mail is the translation of "No Mail", an absent name is empty, an absent type 0, absent
  /// enabled is false, absent aliases are an empty list. Each element under "aliases" becomes one
  /// record, in order. A null dictionary reads as an empty one. A failing reading is logged and the
  /// record is answered as far as it was filled; never null.
  [[nodiscard]] static std::shared_ptr<ExtensionAccount> initWithDictonary(
      const foundation::Value& dictionary);

  [[nodiscard]] foundation::Value address() const override { return mail(); }
  [[nodiscard]] std::string_view class_name() const override { return "ExtensionAccount"; }
  /// "ExtensionAccount %@" with `mail`.
  [[nodiscard]] std::string description() const override;
};

}  // namespace quoll
