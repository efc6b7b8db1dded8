#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/object.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"
#include "quoll/records/addressable.h"

namespace quoll {

/// `ExtensionAlias`: one more sender address of a mail account. It only holds values. Each field is
/// atomic and holds what the dictionary held, of whatever kind. A field that was never set is null.
class ExtensionAlias final : public foundation::Object, public Addressable {
 public:
  foundation::Property<foundation::Value> mail;
  foundation::Property<foundation::Value> name;
  /// The account's name, as the dictionary has it. It is not compared with the account that holds
  /// the alias.
  foundation::Property<foundation::Value> account;

  explicit ExtensionAlias(foundation::Passkey<ExtensionAlias> /*key*/) {}

  /// The factory `new`: nothing is set.
  [[nodiscard]] static std::shared_ptr<ExtensionAlias> make();

  /// `initWithDictonary:`: a record filled from a dictionary whose keys are the names of the
  /// fields; never null. An absent mail is the translation of "No Mail", any other absent text the
  /// empty text. A null dictionary is read as an empty one. A failure is logged and ends the
  /// reading; the record keeps what was filled until then.
  [[nodiscard]] static std::shared_ptr<ExtensionAlias> initWithDictonary(
      const foundation::Value& dictionary);

  [[nodiscard]] foundation::Value address() const override { return mail(); }
  [[nodiscard]] std::string_view class_name() const override { return "ExtensionAlias"; }
  /// "ExtensionAlias %@" with `mail`.
  [[nodiscard]] std::string description() const override;
};

}  // namespace quoll
