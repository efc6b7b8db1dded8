// Harms a share or the receiver at every system call that it makes, and looks at what is left.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "tests/crash/series.h"

namespace quoll::crash {

namespace {

int run(int argc, char** argv) {
  SeriesOptions options;
  std::vector<std::string> wanted;
  CLI::App app(
      "Harms a share or the receiver at every system call that it makes, and looks at what is "
      "left.",
      "crash");
  app.add_option("--from", options.from, "The first point, as a line about a finding numbers it");
  app.add_option("--to", options.to, "The last point");
  app.add_option("--every", options.every, "Every so many only")->check(CLI::PositiveNumber);
  app.add_option("--jobs", options.jobs, "Shares at the same time")->check(CLI::PositiveNumber);
  app.add_option("--seconds", options.seconds, "The time after which a share hangs");
  std::vector<std::string> names;
  std::transform(std::begin(kSeries), std::end(kSeries), std::back_inserter(names),
                 [](const Series& series) { return series.name; });
  app.add_option("SERIES", wanted, "All unless some are named")->check(CLI::IsMember(names));
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error);
  }
  if (const std::string why = why_not_stepped(); !why.empty()) {
    std::cout << "skipped: " << why << "\n";
    return 0;
  }
  long faulty = 0;
  for (const Series& series : kSeries) {
    if (wanted.empty() || std::find(wanted.begin(), wanted.end(), series.name) != wanted.end()) {
      const SeriesResult result = run_series(series, options);
      faulty += result.faulty + result.stuck;
    }
  }
  std::cout << (faulty == 0 ? "nothing found" : "faults found") << "\n";
  return faulty == 0 ? 0 : 1;
}

}  // namespace

}  // namespace quoll::crash

int main(int argc, char** argv) {
  try {
    return quoll::crash::run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "crash: " << error.what() << "\n";
    return 1;
  }
}
