#pragma once

#include <map>
#include <string_view>
#include <vector>

#include "apps/console/operations/operation.h"

namespace quoll::console {

/// All operations, found by name.
class OperationTable final {
 public:
  OperationTable();

  /// The operations with this level and name: one for each class that has it.
  [[nodiscard]] std::vector<const Operation*> named(Operation::Level level,
                                                    std::string_view name) const;
  [[nodiscard]] const std::vector<Operation>& rows() const { return rows_; }

 private:
  std::vector<Operation> rows_;
  std::multimap<std::string_view, const Operation*> by_name_;
};

}  // namespace quoll::console
