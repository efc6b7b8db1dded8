#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/value.h"

namespace quoll::console {

/// One request while it runs: what the operation is given, and what it tells beside its result.
struct Call {
  foundation::Value self;  ///< the receiver; null for a class operation
  std::vector<foundation::Value> arguments;
  /// From the call to the completion, for operations that answer by one.
  std::optional<double> seconds;
};

/// A row of the operation table.
struct Operation {
  enum class Level { kClass, kInstance };

  std::string name;   ///< whole, colons included
  std::string owner;  ///< the class that has it; empty when every value has it
  Level level;
  std::size_t arguments;  ///< values in a request; a completion is none
  std::function<foundation::Value(Call&)> run;
  /// The reply then carries the receiver too.
  bool changes_receiver = false;
};

/// The rows of one subject each.
[[nodiscard]] std::vector<Operation> query_operations();
[[nodiscard]] std::vector<Operation> editing_operations();
[[nodiscard]] std::vector<Operation> components_operations();
[[nodiscard]] std::vector<Operation> request_operations();
[[nodiscard]] std::vector<Operation> container_operations();
[[nodiscard]] std::vector<Operation> record_operations();
[[nodiscard]] std::vector<Operation> message_operations();
[[nodiscard]] std::vector<Operation> rendering_operations();
[[nodiscard]] std::vector<Operation> share_operations();
[[nodiscard]] std::vector<Operation> store_operations();
[[nodiscard]] std::vector<Operation> date_operations();

}  // namespace quoll::console
