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

/// `ExtensionAddress`: one person's mail address with the name parts that go with it.
///
/// A plain value holder; nothing is validated. Each field is atomic by itself. Fields that come
/// from dictionaries hold whatever stood there; absent is null.
class ExtensionAddress final : public foundation::Object, public Addressable {
 public:
  foundation::Property<foundation::Value> mail;
  foundation::Property<foundation::Value> firstName;
  foundation::Property<foundation::Value> lastName;
  foundation::Property<foundation::Value> company;
  foundation::Property<foundation::Value> nickname;
  foundation::Property<std::int64_t> rank;

  /// `initWithDictonary:`: the record filled from a dictionary with the fields' names as keys; an
  /// absent mail is "No Mail", other absent texts are empty, an absent rank is 0. A null dictionary
  /// reads as an empty one. A failing reading is logged and the record is answered as far as it was
  /// filled; never null.
  [[nodiscard]] static std::shared_ptr<ExtensionAddress> initWithDictonary(
      const foundation::Value& dictionary);

  /// `fullName`: first and last name with one space between them, trimmed at both ends.
  [[nodiscard]] std::string fullName() const;

  /// `prettyprint`: the full name, else the company, followed by " <mail>"; trimmed at both ends.
  /// Raises when the company or the mail is neither null nor a text.
  [[nodiscard]] std::string prettyprint() const;

  [[nodiscard]] foundation::Value address() const override { return mail(); }
  [[nodiscard]] std::string_view class_name() const override { return "ExtensionAddress"; }
  /// "ExtensionAddress %@" with `mail`.
  [[nodiscard]] std::string description() const override;
};

}  // namespace quoll
