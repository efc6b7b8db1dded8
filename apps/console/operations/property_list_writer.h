#pragma once

#include <string>

#include "quoll/foundation/value.h"

namespace quoll::console {

/// The forms of a property list that `foundation::read_property_list` reads.
enum class PropertyListForm { kXml, kBinary, kOld };

/// Writes a value as a property list, for tests and samples. It is read back equal, with one
/// exception: the old form has only texts and bytes, so other scalars are read back as their
/// `description`.
///
/// Raises `NSInvalidArgumentException` for what a property list cannot hold: null, objects, and in
/// XML a date outside the years 1 to 9999 (a date there is written to the second). The value must
/// be nested no deeper than the reader's limit, and its texts must be UTF-8.
[[nodiscard]] std::string write_property_list(const foundation::Value& root, PropertyListForm form);

}  // namespace quoll::console
