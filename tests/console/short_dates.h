#pragma once

#include <map>
#include <string>

#include "apps/console/operations/json.h"
#include "tests/console/vector_case.h"

namespace quoll::test {

/// The reply that this system has to give. How a short date looks is the locale data's: the vectors
/// have it from CLDR 42, and where the data is another version, it is asked again.
[[nodiscard]] console::Json reply_of_this_system(
    const VectorCase& vector, const std::map<std::string, std::string>& environment);

}  // namespace quoll::test
