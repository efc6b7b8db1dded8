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
/// may use one.
class ExtensionDate final : public foundation::Object, public foundation::Monitor {
 public:
  /// Null until `Initialize`; a null formatter writes nothing and reads nothing.
  using Formatter = foundation::Property<std::shared_ptr<platform::NSDateFormatter>>;

  /// "2024-03-07T10:15:00Z", in UTC, whatever the user's settings.
  Formatter dateExchange;
  /// The day as yyyyMMdd, in the user's calendar and time zone.
  Formatter dataDay;
  /// The time of day in the user's short style.
  Formatter dateCentrale;
  /// The date in the user's short style.
  Formatter dateCentrale2;

  /// `shared`: the one instance of the process, initialised; made at the first call with the
  /// desktop that is installed then.
  [[nodiscard]] static std::shared_ptr<ExtensionDate> shared();

  /// `Initialize`: makes the four formatters anew, with the installed desktop.
  void Initialize();

  /// `IntDate:`: the date's day as the number yyyymmdd, in the user's calendar and time zone:
  /// 20240307. No date gives 0.
  [[nodiscard]] std::int64_t IntDate(const std::optional<foundation::Date>& date) const;

  /// `centralDate:`: the date as a list of messages shows it: the time alone when it falls on
  /// today, else the date alone. No date gives the empty text.
  [[nodiscard]] std::string centralDate(const std::optional<foundation::Date>& date) const;

  /// `exchangeDate:`: the date that a text of the exchange format names; none for no text and for
  /// any other. Takes this object's lock.
  [[nodiscard]] std::optional<foundation::Date> exchangeDate(
      const std::optional<std::string_view>& text) const;

  [[nodiscard]] std::string_view class_name() const override { return "ExtensionDate"; }
  [[nodiscard]] std::string description() const override { return "ExtensionDate"; }
};

}  // namespace quoll
