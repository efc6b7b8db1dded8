#include <gtest/gtest.h>

#include <string>

#include "apps/console/operations/json.h"
#include "apps/console/operations/write_value.h"
#include "quoll/foundation/collections.h"

namespace quoll::console {
namespace {

TEST(JsonDepth, IsReadTo512Levels) {
  const auto read = [](std::size_t depth) {
    return parse_json(std::string(depth, '[') + std::string(depth, ']'));
  };
  EXPECT_NO_THROW(read(512));
  EXPECT_THROW(read(513), Refused);
}

TEST(JsonDepth, IsWrittenTo1024Levels) {
  const auto written = [](std::size_t depth) {
    foundation::Value value = foundation::List();
    for (std::size_t level = 1; level < depth; ++level) {
      value = foundation::List{value};
    }
    return write_value(value);
  };
  EXPECT_NO_THROW(written(1024));
  EXPECT_THROW(written(1025), Refused);
}

}  // namespace
}  // namespace quoll::console
