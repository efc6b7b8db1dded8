#include "apps/console/operations/operation_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <tuple>

namespace quoll::console {

namespace {

TEST(OperationTable, TakesAnArgumentForEachColonButTheCompletion) {
  const OperationTable table;
  for (const Operation& row : table.rows()) {
    const auto colons = std::count(row.name.begin(), row.name.end(), ':');
    const bool completes = row.name.ends_with("completion:");
    EXPECT_EQ(row.arguments, static_cast<std::size_t>(colons - (completes ? 1 : 0))) << row.name;
  }
}

TEST(OperationTable, HasEachOperationOfAClassOnce) {
  std::set<std::tuple<std::string, std::string, Operation::Level>> seen;
  const OperationTable table;
  for (const Operation& row : table.rows()) {
    EXPECT_TRUE(seen.emplace(row.owner, row.name, row.level).second) << row.owner << row.name;
  }
}

TEST(OperationTable, GivesOperationsOfOneNameTheSameArguments) {
  const OperationTable table;
  for (const Operation& row : table.rows()) {
    for (const Operation* other : table.named(row.level, row.name)) {
      EXPECT_EQ(other->arguments, row.arguments) << row.name;
    }
  }
}

TEST(OperationTable, OnlyOperationsThatChangeTheReceiverTellIt) {
  const OperationTable table;
  for (const Operation& row : table.rows()) {
    // Rendering writes its marks into the text; `addresses` only begins with the same letters.
    const bool changes = row.name.starts_with("set") ||
                         (row.name.starts_with("add") && row.name != "addresses") ||
                         row.name == "renderHtml";
    EXPECT_EQ(row.changes_receiver, changes) << row.name;
  }
}

}  // namespace

}  // namespace quoll::console
