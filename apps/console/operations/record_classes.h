#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "quoll/foundation/object.h"
#include "quoll/foundation/value.h"

namespace quoll::console {

/// One property of a record class, with access by name. `set` raises when the field cannot hold the
/// value.
struct RecordField {
  std::string_view name;
  foundation::Value (*get)(const foundation::Object& record);
  void (*set)(foundation::Object& record, const foundation::Value& value);
};

/// A record class: its name, its factory `new`, and its properties in the order of their
/// declaration.
struct RecordClass {
  std::string_view name;
  std::shared_ptr<foundation::Object> (*make)();
  std::vector<RecordField> fields;

  /// The field with this name; null when there is none.
  [[nodiscard]] const RecordField* field(std::string_view wanted) const;
};

[[nodiscard]] const std::vector<RecordClass>& record_classes();

/// The class with this name; null when there is none.
[[nodiscard]] const RecordClass* record_class(std::string_view name);

}  // namespace quoll::console
