#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/monitor.h"
#include "quoll/foundation/object.h"
#include "quoll/foundation/property.h"
#include "quoll/foundation/value.h"
#include "quoll/platform/dates.h"

namespace quoll {

/// `ExtensionDate`: the date formats that the records share with the mail application. Any thread
/// may use it.
class ExtensionDate final : public foundation::Object, public foundation::Monitor {
 public:
  /// Null until `Initialize` has run. A null formatter writes the empty text and reads no date.
  using Formatter = foundation::Property<std::shared_ptr<platform::NSDateFormatter>>;

  /// "2024-03-07T10:15:00Z": in UTC, whatever the user's settings are.
  Formatter dateExchange;
  /// The day as "20240307", in the user's calendar and time zone.
  Formatter dataDay;
  /// The time of day, in the user's short style.
  Formatter dateCentrale;
  /// The date, in the user's short style.
  Formatter dateCentrale2;

  explicit ExtensionDate(foundation::Passkey<ExtensionDate> /*key*/) {}

  /// The factory `new`: an instance whose formatters are null.
  [[nodiscard]] static std::shared_ptr<ExtensionDate> make();

  /// `shared`: the one instance of the process. The first call makes and initialises it, with the
  /// desktop that is installed at that moment.
  [[nodiscard]] static std::shared_ptr<ExtensionDate> shared();

  /// `Initialize`: makes the four formatters again, with the installed desktop.
  void Initialize();

  /// `IntDate:`: the day of the date as a number, such as 20240307, in the user's calendar and time
  /// zone; 0 for no date.
  [[nodiscard]] std::int64_t IntDate(const std::optional<foundation::Date>& date) const;

  /// `centralDate:`: the date as a list of messages shows it: the time alone for a date of today,
  /// the date alone for any other; the empty text for no date.
  [[nodiscard]] std::string centralDate(const std::optional<foundation::Date>& date) const;

  /// `exchangeDate:`: the date in a text of the exchange format; none for no text and for any other
  /// text. Takes this object's lock.
  [[nodiscard]] std::optional<foundation::Date> exchangeDate(
      const std::optional<std::string_view>& text) const;

  [[nodiscard]] std::string_view class_name() const override { return "ExtensionDate"; }
  [[nodiscard]] std::string description() const override { return "ExtensionDate"; }
};

}  // namespace quoll
