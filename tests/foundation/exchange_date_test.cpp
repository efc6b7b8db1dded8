#include "quoll/foundation/exchange_date.h"

#include <gtest/gtest.h>

namespace quoll::foundation {
namespace {

TEST(ExchangeDate, NamesAMoment) {
  struct Row {
    const char* reason;
    const char* text;
    double seconds;
  };
  const Row rows[] = {
      {"an ordinary one", "2024-03-07T10:15:00Z", 1709806500},
      {"the epoch", "1970-01-01T00:00:00Z", 0},
      {"just before it", "1969-12-31T23:59:59Z", -1},
      {"the first", "0001-01-01T00:00:00Z", -62135596800},
      {"the last", "9999-12-31T23:59:59Z", 253402300799},
      {"a leap day", "2000-02-29T12:34:56Z", 951827696},
      {"every field of its own", "1987-06-05T04:03:21Z", 549864201},
      {"Gregorian before 1582", "1500-02-28T00:00:00Z", -14826758400},
      {"the day after it: 1500 was no leap year", "1500-03-01T00:00:00Z", -14826672000},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(date_of_exchange_text(row.text), Date{row.seconds}) << row.reason;
  }
}

TEST(ExchangeDate, RefusesEverythingElse) {
  const std::pair<const char*, const char*> rows[] = {
      {"nothing", ""},
      {"no Z", "2024-03-07T10:15:00"},
      {"another letter for it", "2024-03-07T10:15:00X"},
      {"small letters", "2024-03-07t10:15:00z"},
      {"a fraction", "2024-03-07T10:15:00.0Z"},
      {"an offset", "2024-03-07T10:15:00+00:00"},
      {"an offset of the same length", "2024-03-07T10:15+000"},
      {"a blank before", " 2024-03-07T10:15:00Z"},
      {"a blank after", "2024-03-07T10:15:00Z "},
      {"a line feed after", "2024-03-07T10:15:00Z\n"},
      {"a blank for T", "2024-03-07 10:15:00Z"},
      {"a blank for a digit", "2024-03- 7T10:15:00Z"},
      {"a sign for a digit", "+024-03-07T10:15:00Z"},
      {"a sign in a month", "2024-+3-07T10:15:00Z"},
      {"what stands before 0", "2024-03-07T10:15:/0Z"},
      {"what stands after 9", "2024-03-07T10:15::0Z"},
      {"what stands before 0, in a number that there is", "2024-03-07T10:15:1/Z"},
      {"what stands after 9, in a number that there is", "2024-03-07T10:15:0:Z"},
      {"a short month", "2024-3-07T10:15:00Z"},
      {"a short year", "24-03-07T10:15:00Z"},
      {"a long year", "12024-03-07T10:15:00Z"},
      {"year 0", "0000-03-07T10:15:00Z"},
      {"month 0", "2024-00-07T10:15:00Z"},
      {"month 13", "2024-13-07T10:15:00Z"},
      {"day 0", "2024-03-00T10:15:00Z"},
      {"30 February", "2024-02-30T10:15:00Z"},
      {"29 February of a common year", "2023-02-29T10:15:00Z"},
      {"hour 24", "2024-03-07T24:00:00Z"},
      {"minute 60", "2024-03-07T10:60:00Z"},
      {"second 60", "2016-12-31T23:59:60Z"},
      {"slashes", "2024/03/07T10:15:00Z"},
      {"dots in the time", "2024-03-07T10.15.00Z"},
      {"Arabic digits", "\xD9\xA2\xD9\xA0\xD9\xA2\xD9\xA4-03-07T10:15:00Z"},
      {"20 bytes that are not UTF-8", "2024-03-07T10:15:0\xFFZ"},
  };
  for (const auto& [reason, text] : rows) {
    EXPECT_EQ(date_of_exchange_text(text), std::nullopt) << reason << ": " << text;
  }
  using namespace std::string_view_literals;
  EXPECT_EQ(date_of_exchange_text("2024-03-07T10:15:0\0Z"sv), std::nullopt) << "a zero byte";
}

}  // namespace
}  // namespace quoll::foundation
