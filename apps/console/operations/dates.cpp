#include "apps/console/operations/binding.h"
#include "quoll/records/extension_date.h"

namespace quoll::console {

std::vector<Operation> date_operations() {
  using D = ExtensionDate;
  return {
      class_operation<D::shared>("shared", "ExtensionDate"),
      instance_operation<&D::Initialize>("Initialize", "ExtensionDate"),
      instance_operation<&D::IntDate>("IntDate:", "ExtensionDate"),
      instance_operation<&D::centralDate>("centralDate:", "ExtensionDate"),
      instance_operation<&D::exchangeDate>("exchangeDate:", "ExtensionDate"),
  };
}

}  // namespace quoll::console
