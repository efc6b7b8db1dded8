#include <algorithm>
#include <iomanip>
#include <iostream>

#include "apps/console/commands.h"
#include "apps/console/operations/json.h"
#include "apps/console/operations/write_value.h"
#include "apps/console/road.h"
#include "quoll/foundation/printable.h"

namespace quoll::console {

namespace {

const char* word_of(Step::State state) {
  switch (state) {
    case Step::State::kGood:
      return "good";
    case Step::State::kWorthKnowing:
      return "note";
    case Step::State::kBroken:
      return "BROKEN";
  }
  return "";
}

void print(const std::vector<Step>& steps) {
  constexpr std::size_t kLongestLine = 400;
  std::size_t widest = 0;
  for (const Step& step : steps) {
    widest = std::max(widest, step.name.size());
  }
  const int width = static_cast<int>(widest);
  for (const Step& step : steps) {
    std::cout << std::left << std::setw(7) << word_of(step.state) << std::setw(width) << step.name
              << "  " << foundation::printable(step.found) << '\n';
    if (!step.advice.empty()) {
      std::cout << std::setw(7 + width) << ""
                << "  -> " << foundation::printable(step.advice) << '\n';
    }
    for (const std::string& line : step.lines) {
      std::cout << std::setw(7 + width) << ""
                << "  " << foundation::printable(line, kLongestLine) << '\n';
    }
  }
  std::cout << (arrives(steps) ? "A share arrives.\n" : "A share does not arrive.\n");
}

void print_json(const std::vector<Step>& steps) {
  console::Json list = console::Json::array();
  for (const Step& step : steps) {
    console::Json lines = console::Json::array();
    for (const std::string& line : step.lines) {
      lines.push_back(console::json_text(line));
    }
    list.push_back({{"step", step.name},
                    {"state", word_of(step.state)},
                    {"found", console::json_text(step.found)},
                    {"advice", console::json_text(step.advice)},
                    {"lines", lines}});
  }
  std::cout << console::json_line({{"arrives", arrives(steps)}, {"steps", list}}) << '\n';
}

}  // namespace

int doctor(bool mend, bool as_json) {
  const auto steps = walk_road(mend);
  as_json ? print_json(steps) : print(steps);
  return arrives(steps) && std::cout.flush() ? 0 : 1;
}

}  // namespace quoll::console
