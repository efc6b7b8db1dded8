// A date as a list of messages shows it, compared with ICU's formatters used directly.

#include <benchmark/benchmark.h>
#include <unicode/smpdtfmt.h>

#include <memory>

#include "quoll/foundation/exchange_date.h"
#include "quoll/linux/icu/date_formatter.h"
#include "quoll/linux/posix/steady_clock.h"
#include "quoll/platform/desktop.h"
#include "quoll/records/extension_date.h"

namespace {

using quoll::foundation::Date;

/// A new moment each time, on a day other than today.
double next_moment() {
  static double moment = 1.5e9;
  return moment += 1000;
}

void central_quoll(benchmark::State& state) {
  const auto dates = quoll::ExtensionDate::shared();
  for (auto _ : state) {
    benchmark::DoNotOptimize(dates->centralDate(Date{next_moment()}));
  }
}

/// The same with ICU alone: the two days are compared as texts, and then the style is chosen.
void central_icu(benchmark::State& state) {
  UErrorCode status = U_ZERO_ERROR;
  const auto locale = icu::Locale::createFromName("en_US");
  const icu::SimpleDateFormat day("yyyyMMdd", locale, status);
  const std::unique_ptr<icu::DateFormat> date(
      icu::DateFormat::createDateInstance(icu::DateFormat::kShort, locale));
  const std::unique_ptr<icu::DateFormat> time(
      icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, locale));
  for (auto _ : state) {
    const double moment = next_moment() * 1000;
    icu::UnicodeString that;
    icu::UnicodeString today;
    icu::UnicodeString shown;
    day.format(moment, that);
    day.format(icu::Calendar::getNow(), today);
    (that == today ? time : date)->format(moment, shown);
    std::string text;
    benchmark::DoNotOptimize(shown.toUTF8String(text));
  }
}

void exchange_quoll(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(quoll::foundation::date_of_exchange_text("2024-03-07T10:15:00Z"));
  }
}

void exchange_icu(benchmark::State& state) {
  UErrorCode status = U_ZERO_ERROR;
  icu::SimpleDateFormat format("yyyy-MM-dd'T'HH:mm:ss'Z'", icu::Locale("en_US_POSIX"), status);
  format.adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
  format.setLenient(0);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        format.parse(icu::UnicodeString::fromUTF8("2024-03-07T10:15:00Z"), status));
  }
}

}  // namespace

int main(int argc, char** argv) {
  setenv("LC_ALL", "en_US", 1);
  const quoll::platform::ScopedDesktop desktop(
      {.clock = quoll::posix::make_clock(), .dates = quoll::icu::make_dates()});
  benchmark::RegisterBenchmark("central/quoll", central_quoll);
  benchmark::RegisterBenchmark("central/icu", central_icu);
  benchmark::RegisterBenchmark("exchange/quoll", exchange_quoll);
  benchmark::RegisterBenchmark("exchange/icu", exchange_icu);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
