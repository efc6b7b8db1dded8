#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/object.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"
#include "quoll/records/addressable.h"

namespace quoll {

/// `ExtensionAddress`: the mail address of one person, with the parts of the name.
///
/// It only holds values; nothing is validated. Each field is atomic. A field that comes from a
/// dictionary holds what the dictionary held, of whatever kind. A field that was never set is null.
class ExtensionAddress final : public foundation::Object, public Addressable {
 public:
  foundation::Property<foundation::Value> mail;
  foundation::Property<foundation::Value> firstName;
  foundation::Property<foundation::Value> lastName;
  foundation::Property<foundation::Value> company;
  foundation::Property<foundation::Value> nickname;
  foundation::Property<std::int64_t> rank;

  explicit ExtensionAddress(foundation::Passkey<ExtensionAddress> /*key*/) {}

  /// The factory `new`: nothing is set.
  [[nodiscard]] static std::shared_ptr<ExtensionAddress> make();

  /// `initWithDictonary:`: a record filled from a dictionary whose keys are the names of the
  /// fields; never null. An absent mail is "No Mail", any other absent text the empty text, an
  /// absent rank 0. A null dictionary is read as an empty one. A failure is logged and ends the
  /// reading; the record keeps what was filled until then.
  [[nodiscard]] static std::shared_ptr<ExtensionAddress> initWithDictonary(
      const foundation::Value& dictionary);

  /// `fullName`: the first and the last name with one space between them, trimmed at both ends.
  [[nodiscard]] std::string fullName() const;

  /// `prettyprint`: the full name, or the company when that is empty, followed by " <mail>";
  /// trimmed at both ends. Raises when one of them is neither null nor a text; bytes pass for a
  /// mail, and empty bytes for no company.
  [[nodiscard]] std::string prettyprint() const;

  [[nodiscard]] foundation::Value address() const override { return mail(); }
  [[nodiscard]] std::string_view class_name() const override { return "ExtensionAddress"; }
  /// "ExtensionAddress %@" with `mail`.
  [[nodiscard]] std::string description() const override;
};

}  // namespace quoll
