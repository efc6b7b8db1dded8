#pragma once

#include <memory>

#include "quoll/platform/dates.h"

namespace quoll::test {

/// Date formatters that need no locale data: whatever is left out is the Gregorian calendar, the
/// given offset from UTC, dates like 3/7/24 and times like 10:15. Of patterns they know those that
/// the system uses, and they read nothing but the exchange format.
class FixedDates final : public platform::Dates {
 public:
  explicit FixedDates(int seconds_from_gmt = 0) : seconds_from_gmt_(seconds_from_gmt) {}

  std::shared_ptr<platform::NSDateFormatter> formatter(
      const platform::DateFormatterSettings& settings) override;

 private:
  int seconds_from_gmt_;
};

}  // namespace quoll::test
