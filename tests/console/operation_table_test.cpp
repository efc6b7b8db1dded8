#include "apps/console/operations/operation_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <tuple>

#include "quoll/message/extension_message.h"

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

TEST(OperationTable, HashesARecordByItsIdentity) {
  const OperationTable table;
  const auto hashes = table.named(Operation::Level::kInstance, "hash");
  const auto row = std::find_if(hashes.begin(), hashes.end(), [](const Operation* one) {
    return one->owner == "ExtensionMessage";
  });
  ASSERT_NE(row, hashes.end());
  const auto hash = [&](const std::shared_ptr<ExtensionMessage>& message) {
    Call call{.self = message, .arguments = {}, .seconds = {}};
    return (*row)->run(call);
  };
  const auto one = ExtensionMessage::make();
  const auto other = ExtensionMessage::make();
  for (const auto& message : {one, other}) {
    message->messageId = "id";
    message->account = "account";
  }
  ASSERT_TRUE(one->isEqual(other.get()));
  EXPECT_EQ(hash(one), hash(one));
  EXPECT_NE(hash(one), hash(other));
}

}  // namespace

}  // namespace quoll::console
