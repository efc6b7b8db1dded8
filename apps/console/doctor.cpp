#include <algorithm>
#include <iomanip>
#include <iostream>

#include "apps/console/commands.h"
#include "apps/console/diagnosis.h"
#include "apps/console/operations/write_value.h"
#include "apps/console/output.h"
#include "quoll/foundation/printable.h"

namespace quoll::console {

namespace {

const char* word_of(Finding::State state) {
  switch (state) {
    case Finding::State::kGood:
      return "good";
    case Finding::State::kWorthKnowing:
      return "note";
    case Finding::State::kBroken:
      return "BROKEN";
  }
  return "";
}

void print(const std::vector<Finding>& findings) {
  constexpr std::size_t kLongestLine = 400;
  std::size_t widest = 0;
  for (const Finding& finding : findings) {
    widest = std::max(widest, finding.name.size());
  }
  const int width = static_cast<int>(widest);
  for (const Finding& finding : findings) {
    std::cout << std::left << std::setw(7) << word_of(finding.state) << std::setw(width)
              << finding.name << "  " << foundation::printable(finding.found) << '\n';
    if (!finding.advice.empty()) {
      std::cout << std::setw(7 + width) << ""
                << "  -> " << foundation::printable(finding.advice) << '\n';
    }
    for (const std::string& line : finding.lines) {
      std::cout << std::setw(7 + width) << ""
                << "  " << foundation::printable(line, kLongestLine) << '\n';
    }
  }
  std::cout << (share_would_arrive(findings) ? "A share arrives.\n"
                                             : "A share does not arrive, or not whole.\n");
}

Json json_of(const std::vector<Finding>& findings) {
  Json list = Json::array();
  for (const Finding& finding : findings) {
    Json lines = Json::array();
    for (const std::string& line : finding.lines) {
      lines.push_back(json_text(line));
    }
    list.push_back({{"step", finding.name},
                    {"state", word_of(finding.state)},
                    {"found", json_text(finding.found)},
                    {"advice", json_text(finding.advice)},
                    {"lines", lines}});
  }
  return {{"arrives", share_would_arrive(findings)}, {"steps", list}};
}

}  // namespace

int doctor(bool repair, bool as_json) {
  const auto findings = diagnose(repair);
  as_json ? print_json(json_of(findings)) : print(findings);
  return finish(share_would_arrive(findings));
}

}  // namespace quoll::console
