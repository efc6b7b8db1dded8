#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/value.h"

namespace quoll::console {

/// One call of an operation, while it runs.
struct Call {
  foundation::Value self;  ///< the object it is called on; null for a class operation
  std::vector<foundation::Value> arguments;
  /// The time from the call to the completion, for an operation that has a completion.
  std::optional<double> seconds;
};

/// A row of the operation table.
struct Operation {
  enum class Level { kClass, kInstance };

  std::string name;   ///< the whole name, with its colons
  std::string owner;  ///< the class that has it; empty when all values have it
  Level level;
  std::size_t arguments;  ///< the number of values in a request, without a completion
  std::function<foundation::Value(Call&)> run;
  /// True when the reply must have the receiver too.
  bool changes_receiver = false;
};

/// The operations of one subject each.
[[nodiscard]] std::vector<Operation> query_operations();
[[nodiscard]] std::vector<Operation> editing_operations();
[[nodiscard]] std::vector<Operation> components_operations();
[[nodiscard]] std::vector<Operation> request_operations();
[[nodiscard]] std::vector<Operation> container_operations();
[[nodiscard]] std::vector<Operation> record_operations();
[[nodiscard]] std::vector<Operation> message_operations();
[[nodiscard]] std::vector<Operation> share_operations();
[[nodiscard]] std::vector<Operation> date_operations();

}  // namespace quoll::console
