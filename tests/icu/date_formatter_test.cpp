#include "quoll/linux/icu/date_formatter.h"

#include <gtest/gtest.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <cmath>
#include <limits>

#include "quoll/platform/desktop.h"
#include "quoll/records/extension_date.h"
#include "tests/icu/environment.h"
#include "tests/support/recorders.h"

namespace quoll {
namespace {

using foundation::Date;
using test::DateEnvironment;

constexpr double kMoment = 1709806500;  // 2024-03-07T10:15:00Z
constexpr double kFirst = -62135596800;
constexpr double kLast = 253402300799;

class DateFormatterTest : public ::testing::Test {
 protected:
  /// What the records' formats are in an environment.
  static std::shared_ptr<ExtensionDate> formats(
      const std::map<std::string, std::string>& variables) {
    const DateEnvironment environment(variables);
    auto made = ExtensionDate::make();
    made->Initialize();
    return made;
  }

  std::shared_ptr<test::RecordingLog> log = std::make_shared<test::RecordingLog>();
  std::shared_ptr<test::HeldClock> clock = std::make_shared<test::HeldClock>();
  platform::ScopedDesktop desktop{{.log = log, .clock = clock, .dates = icu::make_dates()}};
};

TEST_F(DateFormatterTest, WritesInTheUsersLocaleCalendarAndDigits) {
  struct Row {
    const char* locale;
    const char* date;
    const char* time;
    std::int64_t day;
  };
  const Row rows[] = {
      {"en_US.UTF-8", "3/7/24", "10:15\u202FAM", 20240307},
      {"C", "3/7/24", "10:15\u202FAM", 20240307},
      {"de_DE.UTF-8", "07.03.24", "10:15", 20240307},
      {"th_TH", "7/3/67", "10:15", 25670307},
      {"fa_IR", "۱۴۰۲/۱۲/۱۷", "۱۰:۱۵", 14021217},
      {"ar_EG", "٧\u200F/٣\u200F/٢٠٢٤", "١٠:١٥ ص", 20240307},
      {"ja_JP", "2024/03/07", "10:15", 20240307},
      {"ne_NP", "२४/३/७", "१०:१५", 20240307},
  };
  for (const Row& row : rows) {
    const auto dates = formats({{"LC_ALL", row.locale}, {"TZ", "UTC"}});
    EXPECT_EQ(dates->dateCentrale2()->stringFromDate({kMoment}), row.date) << row.locale;
    EXPECT_EQ(dates->dateCentrale()->stringFromDate({kMoment}), row.time) << row.locale;
    EXPECT_EQ(dates->IntDate(Date{kMoment}), row.day) << row.locale;
    EXPECT_EQ(dates->dateExchange()->stringFromDate({kMoment}), "2024-03-07T10:15:00Z")
        << row.locale;
    EXPECT_EQ(dates->exchangeDate("2024-03-07T10:15:00Z"), Date{kMoment}) << row.locale;
  }
}

TEST_F(DateFormatterTest, TheDayIsNeverZeroForADate) {
  struct Row {
    const char* locale;
    std::int64_t first;
    std::int64_t last;
  };
  const Row rows[] = {
      {"en_US", 10103, 99991231},  // the Julian calendar was two days behind
      {"th_TH", 5440103, 105421231},
      {"fa_IR", -6211011, 93781010},
      {"ar_SA", -6400518, 96660402},
      {"fa", -6211011, 93781010},
      {"ps_AF", -6211011, 93781010},
      {"fa_IR_u_ca_gregory", 10103, 99991231},  // a locale may name its calendar
      {"am_ET", 10103, 99991231},
  };
  for (const Row& row : rows) {
    const auto dates = formats({{"LC_ALL", row.locale}, {"TZ", "UTC"}});
    EXPECT_EQ(dates->IntDate(Date{kFirst}), row.first) << row.locale;
    EXPECT_EQ(dates->IntDate(Date{kLast}), row.last) << row.locale;
  }
}

TEST_F(DateFormatterTest, TheDayIsTheSameOnEverySystem) {
  struct Row {
    double moment;
    std::int64_t gregorian;
    std::int64_t persian;
    std::int64_t buddhist;
    std::int64_t hijri;
  };
  const Row rows[] = {
      {-12219552000, 15821002, 9610720, 21251002, 9900914},
      {-5355676800, 18000415, 11790126, 23430415, 12141120},
      {-1035158400, 19370314, 13151223, 24800314, 13560101},
      {-86400, 19691231, 13481010, 25121231, 13891021},
      {290736000, 19790320, 13571229, 25220320, 13990421},
      {951782400, 20000229, 13781210, 25430229, 14201123},
      {1710806400, 20240319, 14021229, 25670319, 14450909},
      {1710892800, 20240320, 14030101, 25670320, 14450910},
      {1740787200, 20250301, 14031211, 25680301, 14460901},
      {1773964800, 20260320, 14041229, 25690320, 14471001},
      {1893456000, 20300101, 14081012, 25730101, 14510826},
      {2790115200, 20580601, 14370311, 26010601, 14801209},
      {3404332800, 20771117, 14560827, 26201117, 15010101},
      {4835030400, 21230321, 15020101, 26660321, 15470923},
      {16741555200, 25000709, 18790418, 30430709, 19360811},
  };
  for (const Row& row : rows) {
    for (const auto& [locale, day] : {std::pair{"de_DE", row.gregorian},
                                      {"fa_IR", row.persian},
                                      {"th_TH", row.buddhist},
                                      {"ar_SA", row.hijri}}) {
      EXPECT_EQ(formats({{"LC_ALL", locale}, {"TZ", "UTC"}})->IntDate(Date{row.moment}), day)
          << locale << ' ' << row.moment;
    }
  }
}

TEST_F(DateFormatterTest, TakesTheTimeZoneOfTheCLibrary) {
  struct Row {
    const char* reason;
    const char* zone;
    double moment;
    const char* time;
    std::int64_t day;
  };
  const Row rows[] = {
      {"UTC", "UTC", kMoment, "10:15", 20240307},
      {"winter", "Europe/Berlin", kMoment, "11:15", 20240307},
      {"summer", "Europe/Berlin", 1720000000, "11:46", 20240703},
      {"the second before the clocks go forward", "Europe/Berlin", 1711846799, "01:59", 20240331},
      {"the second they do", "Europe/Berlin", 1711846800, "03:00", 20240331},
      {"the second before they go back", "Europe/Berlin", 1729990799, "02:59", 20241027},
      {"the second they do", "Europe/Berlin", 1729990800, "02:00", 20241027},
      {"the other half of the year", "Australia/Sydney", 1704067200, "11:00", 20240101},
      {"ahead by a day and three quarters of an hour", "Pacific/Chatham", kMoment, "00:00",
       20240308},
      {"behind", "Pacific/Pago_Pago", kMoment, "23:15", 20240306},
      {"a day that was left out", "Pacific/Apia", 1325239200, "00:00", 20111231},
      {"a rule instead of a name", "CET-1CEST,M3.5.0,M10.5.0/3", 1720000000, "11:46", 20240703},
      {"an offset in a rule", "<+0545>-5:45", kMoment, "16:00", 20240307},
      {"a name that nobody has is UTC", "Nowhere/Else", kMoment, "10:15", 20240307},
      {"the last moment before midnight", "Asia/Tokyo", 1709823599.999, "23:59", 20240307},
      {"midnight", "Asia/Tokyo", 1709823600, "00:00", 20240308},
      {"before 1970", "Asia/Tokyo", -32400.5, "23:59", 19691231},
  };
  for (const Row& row : rows) {
    const DateEnvironment environment({{"LC_ALL", "de_DE"}, {"TZ", row.zone}});
    const auto made = ExtensionDate::make();
    ExtensionDate& dates = *made;
    dates.Initialize();
    EXPECT_EQ(dates.dateCentrale()->stringFromDate({row.moment}), row.time) << row.reason;
    EXPECT_EQ(dates.IntDate(Date{row.moment}), row.day) << row.reason;
    EXPECT_EQ(dates.dateExchange()->stringFromDate({kMoment}), "2024-03-07T10:15:00Z");
  }
}

TEST_F(DateFormatterTest, TakesTheTimeZoneThatHoldsWhenItIsMade) {
  for (const auto& [zone, time] : {std::pair{"UTC", "10:15"}, {"Asia/Tokyo", "19:15"}}) {
    const DateEnvironment environment({{"LC_ALL", "de_DE"}, {"TZ", zone}});
    const auto formatter = icu::make_dates()->formatter({.date_format = "HH:mm"});
    EXPECT_EQ(formatter->stringFromDate({kMoment}), time) << "one alone, in " << zone;
  }
}

TEST_F(DateFormatterTest, TodayIsTheDayOfTheUsersTimeZone) {
  struct Row {
    const char* reason;
    const char* zone;
    double present;
    double date;
    const char* shown;
  };
  const Row rows[] = {
      {"the first moment of a day of 23 hours", "Europe/Berlin", 1711922399, 1711839600, "00:00"},
      {"the moment before it", "Europe/Berlin", 1711922399, 1711839599.5, "30.03.24"},
      {"the moment after it", "Europe/Berlin", 1711839600, 1711922400, "01.04.24"},
      {"24 hours before, on a day of 25", "Europe/Berlin", 1730069999, 1729983599, "00:59"},
      {"the last moment of the day before that", "Europe/Berlin", 1730069999, 1729979999,
       "26.10.24"},
      {"its last moment is of today", "Europe/Berlin", 1729980000, 1730069999, "23:59"},
      {"the day after it", "Europe/Berlin", 1729980000, 1730070000, "28.10.24"},
      {"a day that begins at one", "America/Havana", 1710046800, 1710046800, "01:00"},
      {"the second before it is of yesterday", "America/Havana", 1710046800, 1710046799,
       "09.03.24"},
      {"the same on the other side of an ocean", "Africa/Cairo", 1714082400, 1714082399,
       "25.04.24"},
      {"half past midnight for the first time, now for the second", "America/Havana", 1730611800,
       1730608200, "00:30"},
      {"and the other way round", "America/Havana", 1730608200, 1730611800, "00:30"},
      {"midnight that put the clocks back into the day before", "America/Sao_Paulo", 1518921000,
       1518917400, "23:30"},
      {"the day begins when they show it again", "America/Sao_Paulo", 1518922800, 1518921000,
       "17.02.18"},
      {"yesterday was two days ago", "Pacific/Apia", 1325239200, 1325239199, "29.12.11"},
      {"tomorrow by UTC", "Pacific/Kiritimati", kMoment, kMoment - 900, "00:00"},
      {"yesterday there", "Pacific/Kiritimati", kMoment, kMoment - 901, "07.03.24"},
      {"a quarter of an hour off", "Asia/Kathmandu", 1709748900, 1709748900, "00:00"},
      {"the second before it", "Asia/Kathmandu", 1709748900, 1709748899, "06.03.24"},
  };
  for (const Row& row : rows) {
    clock->present = row.present;
    EXPECT_EQ(formats({{"LC_ALL", "de_DE"}, {"TZ", row.zone}})->centralDate(Date{row.date}),
              row.shown)
        << row.reason;
  }
}

TEST_F(DateFormatterTest, AgreesWithICUsOwnTimeZones) {
  for (const char* zone :
       {"Europe/Berlin", "America/New_York", "Asia/Kolkata", "Australia/Sydney"}) {
    const DateEnvironment environment({{"LC_ALL", "de_DE"}, {"TZ", zone}});
    const auto made = ExtensionDate::make();
    ExtensionDate& dates = *made;
    dates.Initialize();
    UErrorCode status = U_ZERO_ERROR;
    ::icu::GregorianCalendar calendar(::icu::TimeZone::createTimeZone(zone), status);
    for (double moment = 0; moment < 1.7e9; moment += 40000000.0 / 9) {
      calendar.setTime(moment * 1000, status);
      const std::int64_t day = calendar.get(UCAL_YEAR, status) * 10000 +
                               (calendar.get(UCAL_MONTH, status) + 1) * 100 +
                               calendar.get(UCAL_DATE, status);
      ASSERT_EQ(dates.IntDate(Date{moment}), day) << zone << " " << moment;
    }
    ASSERT_TRUE(U_SUCCESS(status));
  }
}

TEST_F(DateFormatterTest, EveryNumberIsWrittenSomehowInEveryCalendar) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const char* locale : {"de_DE", "th_TH", "fa_IR", "ar_SA"}) {
    const auto dates = formats({{"LC_ALL", locale}, {"TZ", "Europe/Berlin"}});
    for (const double seconds : {std::numeric_limits<double>::max(), kInfinity, 3.4e38, 1e14, 1e15,
                                 std::numeric_limits<double>::lowest(), -kInfinity, -1e14, -1e15}) {
      EXPECT_NE(dates->dateCentrale2()->stringFromDate({seconds}), "") << locale << seconds;
      EXPECT_NE(dates->IntDate(Date{seconds}), 0) << locale << seconds;
    }
    EXPECT_NE(dates->IntDate(Date{9e13}), dates->IntDate(Date{1e14})) << locale;
    EXPECT_NE(dates->IntDate(Date{-9e13}), dates->IntDate(Date{-1e14})) << locale;
    EXPECT_EQ(dates->IntDate(Date{1e14}), dates->IntDate(Date{2e14})) << "nothing is farther away";
    const Date no_date{std::nan("")};
    EXPECT_EQ(dates->dateCentrale2()->stringFromDate(no_date), "") << locale;
    EXPECT_EQ(dates->centralDate(no_date), "") << locale;
    EXPECT_EQ(dates->IntDate(no_date), 0) << locale;
  }
}

TEST_F(DateFormatterTest, ReadsBackWhatAPatternWrites) {
  const DateEnvironment environment({{"LC_ALL", "de_DE"}, {"TZ", "Europe/Berlin"}});
  const auto formatter = icu::make_dates()->formatter({.date_format = "yyyy-MM-dd HH:mm"});
  for (const double seconds : {kMoment, 1720000020.0, 1711846740.0, 1711846800.0, -86400.0}) {
    const std::string text = formatter->stringFromDate({seconds});
    EXPECT_EQ(formatter->dateFromString(text), Date{seconds}) << text;
  }
  const auto twice = formatter->dateFromString("2024-10-27 02:30");
  ASSERT_TRUE(twice);
  EXPECT_EQ(formatter->stringFromDate(*twice), "2024-10-27 02:30") << "one of the two";
  const std::pair<const char*, std::string> refused[] = {
      {"nothing", ""},
      {"a part", "2024-03-07"},
      {"more than that", "2024-03-07 11:15 x"},
      {"a blank before", " 2024-03-07 11:15"},
      {"a short month", "2024-3-07 11:15"},
      {"no such day", "2024-02-30 11:15"},
      {"a time that the clocks skip", "2024-03-31 02:30"},
      {"not UTF-8", "2024-03-07 11:15\xFF"},
      {"endless", std::string(1000000, '1')},
  };
  for (const auto& [reason, text] : refused) {
    EXPECT_EQ(formatter->dateFromString(text), std::nullopt) << reason;
  }
}

TEST_F(DateFormatterTest, OnlyTheWholeExchangeFormatIsReadByItsRules) {
  const platform::DateFormatterSettings exchange{.locale = "en_US_POSIX",
                                                 .seconds_from_gmt = 0,
                                                 .calendar = "gregorian",
                                                 .date_format = "yyyy-MM-dd'T'HH:mm:ss'Z'"};
  const auto read_by = [](const platform::DateFormatterSettings& settings) {
    return icu::make_dates()->formatter(settings)->dateFromString("2024-03-07T10:15:00Z");
  };
  EXPECT_EQ(read_by(exchange), Date{kMoment});
  auto settings = exchange;
  settings.seconds_from_gmt = 3600;
  EXPECT_EQ(read_by(settings), Date{kMoment - 3600});
  settings = exchange;
  settings.locale = "fa_IR";
  EXPECT_EQ(read_by(settings), std::nullopt) << "it is written in other digits";
  settings = exchange;
  settings.calendar = "buddhist";
  EXPECT_EQ(read_by(settings), Date{-15424868700}) << "543 years before, by the Julian calendar";
  settings = exchange;
  settings.date_format = "yyyy-MM-dd'T'HH:mm:ss.S'Z'";
  EXPECT_EQ(read_by(settings), std::nullopt);
}

TEST_F(DateFormatterTest, TheGregorianCalendarIsCarriedBack) {
  const auto text = [](const char* locale, const char* calendar) {
    return icu::make_dates()
        ->formatter({.locale = locale,
                     .seconds_from_gmt = 0,
                     .calendar = calendar,
                     .date_format = "yyyy-MM-dd"})
        ->stringFromDate({-14826672000});
  };
  EXPECT_EQ(text("en_US_POSIX", "gregorian"), "1500-03-01");
  EXPECT_EQ(text("th_TH", "gregorian"), "1500-03-01") << "in any locale";
  EXPECT_EQ(text("th_TH", "buddhist"), "2043-02-20") << "another one is left as it is";
}

TEST_F(DateFormatterTest, APatternGoesBeforeTheStyles) {
  const auto text = [](const platform::DateFormatterSettings& settings) {
    return icu::make_dates()->formatter(settings)->stringFromDate({kMoment});
  };
  constexpr auto kShort = platform::NSDateFormatterStyle::NSDateFormatterShortStyle;
  EXPECT_EQ(text({.date_format = "yyyy", .date_style = kShort, .time_style = kShort}), "2024");
  EXPECT_EQ(text({.date_format = "", .date_style = kShort}), "") << "an empty one too";
  EXPECT_EQ(text({}), "") << "with neither there is nothing to write";
}

TEST_F(DateFormatterTest, ReadsATextOfAThousandBytes) {
  for (const std::size_t size : {999U, 1000U, 1001U}) {
    const auto formatter = icu::make_dates()->formatter(
        {.seconds_from_gmt = 0, .date_format = "yyyy'" + std::string(size - 4, 'x') + "'"});
    const std::string text = formatter->stringFromDate({0});
    ASSERT_EQ(text.size(), size);
    EXPECT_EQ(formatter->dateFromString(text), size <= 1000 ? std::optional(Date{0}) : std::nullopt)
        << size;
  }
}

TEST_F(DateFormatterTest, APatternMayTellTheZone) {
  const auto formatter =
      icu::make_dates()->formatter({.seconds_from_gmt = -12600, .date_format = "HH:mm xxx"});
  EXPECT_EQ(formatter->stringFromDate({kMoment}), "06:45 -03:30");
}

TEST_F(DateFormatterTest, AnImpossibleCalendarWritesNothingAndIsLogged) {
  const auto formatter = icu::make_dates()->formatter({.calendar = "not=one", .date_format = "y"});
  ASSERT_NE(formatter, nullptr);
  EXPECT_EQ(formatter->stringFromDate({kMoment}), "");
  EXPECT_EQ(formatter->dateFromString("2024"), std::nullopt);
  ASSERT_EQ(log->lines().size(), 1U);
  EXPECT_TRUE(log->lines()[0].starts_with("dates: ")) << log->lines()[0];
}

}  // namespace
}  // namespace quoll
