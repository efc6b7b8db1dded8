#include "apps/console/operations/operation_table.h"

#include <iterator>
#include <utility>

namespace quoll::console {

OperationTable::OperationTable() {
  for (auto* subject : {query_operations, editing_operations, components_operations,
                        request_operations, container_operations, record_operations,
                        message_operations, share_operations, date_operations}) {
    std::vector<Operation> rows = subject();
    std::move(rows.begin(), rows.end(), std::back_inserter(rows_));
  }
  for (const Operation& row : rows_) {
    by_name_.emplace(row.name, &row);
  }
}

std::vector<const Operation*> OperationTable::named(Operation::Level level,
                                                    std::string_view name) const {
  std::vector<const Operation*> found;
  const auto [first, last] = by_name_.equal_range(name);
  for (auto entry = first; entry != last; ++entry) {
    if (entry->second->level == level) {
      found.push_back(entry->second);
    }
  }
  return found;
}

}  // namespace quoll::console
