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

/// `ExtensionAccount`: one mail account of the mail application. It only holds values. Each field
/// is atomic. A field that comes from a dictionary holds what the dictionary held, of whatever
/// kind. A field that was never set is null.
class ExtensionAccount final : public foundation::Object, public Addressable {
 public:
  foundation::Property<foundation::Value> mail;
  foundation::Property<foundation::Value> name;
  /// A list of `ExtensionAlias`; null until it is set or read from a dictionary.
  foundation::Property<foundation::List> aliases{nullptr};
  /// The mail application's code for the kind of account. The library only passes it on.
  foundation::Property<std::int64_t> type;
  foundation::Property<bool> enabled;

  explicit ExtensionAccount(foundation::Passkey<ExtensionAccount> /*key*/) {}

  /// The factory `new`: nothing is set.
  [[nodiscard]] static std::shared_ptr<ExtensionAccount> make();

  /// `initWithDictonary:`: a record filled from a dictionary whose keys are the names of the
  /// fields; never null. An absent mail is the translation of "No Mail", an absent name the empty
  /// text, an absent type 0, an absent enabled false, absent aliases an empty list. Each element
  /// under "aliases" becomes one record, in order. A null dictionary is read as an empty one. A
  /// failure is logged and ends the reading; the record keeps what was filled until then.
  [[nodiscard]] static std::shared_ptr<ExtensionAccount> initWithDictonary(
      const foundation::Value& dictionary);

  [[nodiscard]] foundation::Value address() const override { return mail(); }
  [[nodiscard]] std::string_view class_name() const override { return "ExtensionAccount"; }
  /// "ExtensionAccount %@" with `mail`.
  [[nodiscard]] std::string description() const override;
};

}  // namespace quoll
