#include "linux/posix/system_log.h"

#include <gtest/gtest.h>

#include <string>

namespace quoll {
namespace {

TEST(SystemLog, TakesAnything) {
  const auto log = posix::make_system_log("quoll-test");
  log->line("%s %n is no pattern");
  log->line(std::string(1 << 20, '\n'));
}

}  // namespace
}  // namespace quoll
