#include "apps/share/report.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>

#include "quoll/foundation/printable.h"

namespace quoll::share {

namespace {

/// "2 files (4096 bytes), 1 link", in the order of the alphabet.
std::string counts_of(const std::vector<SharedThing>& things) {
  struct Sum {
    std::size_t count = 0;
    std::uint64_t bytes = 0;
  };
  std::map<std::string, Sum> kinds;
  for (const SharedThing& thing : things) {
    ++kinds[thing.kind].count;
    kinds[thing.kind].bytes += thing.bytes;
  }
  std::string out;
  for (const auto& [kind, sum] : kinds) {
    out += (out.empty() ? "" : ", ") + std::to_string(sum.count) + " " + kind;
    out += sum.count == 1 ? "" : "s";
    out += sum.bytes == 0 ? "" : " (" + std::to_string(sum.bytes) + " bytes)";
  }
  return out.empty() ? "nothing" : out;
}

/// "2: no such file, 1: it is a folder".
std::string reasons_of(const std::vector<LeftOut>& all) {
  std::map<std::string, std::size_t> reasons;
  for (const LeftOut& left : all) {
    ++reasons[left.logged_as.empty() ? left.why : left.logged_as];
  }
  std::string out;
  for (const auto& [why, count] : reasons) {
    out += (out.empty() ? "" : ", ") + std::to_string(count) + ": " + why;
  }
  return out;
}

/// What was given, which may be any bytes.
std::string shown(const std::string& given) {
  return given.empty() ? "\"\"" : foundation::printable(given);
}

/// The reason, and what to do.
std::string told_failure(const ShareResult& result) {
  return result.failure + "; " + result.advice;
}

}  // namespace

void report(const ShareResult& result, std::ostream& out) {
  for (const LeftOut& left : result.left_out) {
    out << "left out: " << shown(left.what) << ": " << left.why << '\n';
  }
  if (result.folder_trouble) {
    out << foundation::printable(*result.folder_trouble) << '\n';
  }
  if (!result.is_opened) {
    out << "not opened: " << told_failure(result) << '\n';
  }
  out.flush();
}

std::string where_it_went(const ShareResult& result) {
  return std::string("the mail application has taken it") +
         (result.draft.empty() ? "" : "; the draft will be " + result.draft);
}

std::string log_line(const ShareResult& result, std::chrono::milliseconds time) {
  std::string line = result.is_opened ? "share given to " : "share not given to ";
  line += result.application.empty() ? "anybody" : result.application;
  line += " after " + std::to_string(time.count()) + " ms: " + counts_of(result.shared);
  line += result.left_out.empty() ? "" : "; left out: " + reasons_of(result.left_out);
  if (!result.is_opened && !result.is_failure_logged) {
    line += "; " + (result.logged_as.empty() ? result.failure : result.logged_as);
  }
  const std::string trouble = "the shared folder cannot be used";
  line += result.folder_trouble && !line.ends_with(trouble) ? "; " + trouble : "";
  return line;
}

std::string as_json(const ShareResult& result, std::chrono::milliseconds time) {
  using Json = nlohmann::ordered_json;
  const auto text_or_null = [](const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(foundation::printable(text));
  };
  Json shared = Json::array();
  for (const SharedThing& thing : result.shared) {
    shared.push_back(
        {{"kind", thing.kind}, {"given", text_or_null(thing.given)}, {"bytes", thing.bytes}});
  }
  Json left_out = Json::array();
  for (const LeftOut& left : result.left_out) {
    left_out.push_back({{"given", foundation::printable(left.what)}, {"reason", left.why}});
  }
  return Json{{"opened", result.is_opened},
              {"state", result.is_opened ? "taken" : "not taken"},
              {"application", text_or_null(result.application)},
              {"draft", text_or_null(result.draft)},
              {"shared", std::move(shared)},
              {"leftOut", std::move(left_out)},
              {"folderTrouble", text_or_null(result.folder_trouble.value_or(""))},
              {"reason", text_or_null(result.is_opened ? "" : told_failure(result))},
              {"milliseconds", time.count()}}
      .dump();
}

}  // namespace quoll::share
