#include "apps/compose/left_out.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

#include "quoll/platform/log.h"

namespace quoll::compose {
namespace {

constexpr std::size_t kMostNamed = 100;
constexpr char kEnd = '\0';

/// Cuts off what stands before the next zero byte; the rest when there is none.
std::string_view next_field(std::string_view& records) {
  const auto end = std::min(records.find(kEnd), records.size());
  const std::string_view field = records.substr(0, end);
  records.remove_prefix(std::min(end + 1, records.size()));
  return field;
}

}  // namespace

void LeftOutFiles::add(LeftOut file) {
  if (named.size() < kMostNamed) {
    std::ranges::replace(file.name, kEnd, ' ');  // it would end the record
    named.push_back(std::move(file));
  } else {
    ++more;
  }
}

std::string LeftOutFiles::as_records() const {
  std::string records;
  for (const LeftOut& file : named) {
    records += file.name + kEnd + file.reason + kEnd;
  }
  if (more != 0) {
    records += kEnd + std::to_string(more) + kEnd;
  }
  return records;
}

LeftOutFiles LeftOutFiles::from_records(std::string_view records) {
  LeftOutFiles files;
  while (!records.empty()) {
    const std::string_view name = next_field(records);
    const std::string_view reason = next_field(records);
    if (records.empty() && !files.named.empty() && name.empty() &&
        std::from_chars(reason.data(), reason.data() + reason.size(), files.more).ec ==
            std::errc()) {
      break;
    }
    files.named.push_back({std::string(name), std::string(reason)});
  }
  return files;
}

void log_left_out(const LeftOutFiles& files) {
  std::map<std::string, std::size_t> numbers;
  for (const LeftOut& file : files.named) {
    ++numbers[file.reason];
  }
  for (const auto& [reason, number] : numbers) {
    platform::log("left out %@: %@", number, reason);
  }
  if (files.more != 0) {
    platform::log("left out %@ more", files.more);
  }
}

}  // namespace quoll::compose
