#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/object.h"
#include "quoll/foundation/polymorphic.h"
#include "quoll/foundation/value.h"

namespace quoll::platform {

/// How much of a date or of a time a formatter without a pattern writes, under the platform's
/// numbers.
enum class NSDateFormatterStyle : unsigned {
  NSDateFormatterNoStyle = 0,
  NSDateFormatterShortStyle = 1,
};

/// What a date formatter is set up with. What is left out is the user's own: locale, calendar and
/// time zone, as they are when the formatter is made.
struct DateFormatterSettings {
  /// A locale's identifier, for instance "en_US_POSIX".
  std::optional<std::string> locale{};
  /// Of the time zone.
  std::optional<int> seconds_from_gmt{};
  /// A calendar's identifier: `NSCalendarIdentifierGregorian`.
  std::optional<std::string> calendar{};
  /// A pattern in Unicode's letters; the styles are then not looked at.
  std::optional<std::string> date_format{};
  NSDateFormatterStyle date_style = NSDateFormatterStyle::NSDateFormatterNoStyle;
  NSDateFormatterStyle time_style = NSDateFormatterStyle::NSDateFormatterNoStyle;
};

inline constexpr std::string_view NSCalendarIdentifierGregorian = "gregorian";

/// `NSDateFormatter`: writes dates as text and reads them back. It never changes once it is made;
/// any thread may use it, several at a time.
class NSDateFormatter : public foundation::Object {
 public:
  /// `stringFromDate:`.
  [[nodiscard]] virtual std::string stringFromDate(foundation::Date date) const = 0;
  /// `dateFromString:`: none when the whole text is not of the formatter's form.
  [[nodiscard]] virtual std::optional<foundation::Date> dateFromString(
      std::string_view text) const = 0;

  [[nodiscard]] std::string_view class_name() const override { return "NSDateFormatter"; }
  [[nodiscard]] std::string description() const override { return "NSDateFormatter"; }
};

/// The maker of date formatters. Any thread may call.
class Dates : public foundation::Polymorphic {
 public:
  /// Never null. Settings that cannot be had give a formatter that writes nothing and reads
  /// nothing; the log says why.
  [[nodiscard]] virtual std::shared_ptr<NSDateFormatter> formatter(
      const DateFormatterSettings& settings) = 0;
};

}  // namespace quoll::platform
