#pragma once

#include <string>

#include "quoll/foundation/value.h"

namespace quoll::console {

/// The forms of a property list that `foundation::read_property_list` reads.
enum class PropertyListForm { kXml, kBinary, kOld };

/// The value as a document, for tests and for samples. It reads back equal; but in the old form,
/// which has only texts and bytes, every other scalar as its `description`. Raises
/// `NSInvalidArgumentException` for what no property list holds: null, objects, in XML a date
/// outside the years 1 to 9999 (a date there is written to the second). Values nest no deeper than
/// the reader's limit, texts are UTF-8.
[[nodiscard]] std::string write_property_list(const foundation::Value& root, PropertyListForm form);

}  // namespace quoll::console
