#include "quoll/linux/posix/system_log.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

namespace {

std::string logged;

void keep(const char* format, va_list arguments) {
  std::vector<char> text(std::size_t{1} << 16U);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  logged = text.data();
}

}  // namespace

// The C library's, replaced: what it would send is kept. Under the second name it is called by
// programs whose buffers the compiler guards.
extern "C" void syslog(int /*priority*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  keep(format, arguments);
  va_end(arguments);
}
extern "C" void __syslog_chk(int /*priority*/, int /*guard*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  keep(format, arguments);
  va_end(arguments);
}

namespace quoll {
namespace {

TEST(SystemLog, TakesAnything) {
  const auto log = posix::make_system_log("quoll-test");
  log->write({"%s %n is no pattern"});
  EXPECT_EQ(logged, "%s %n is no pattern");
  log->write({std::string(1 << 20, '\n')});
  EXPECT_LE(logged.size(), 4096U);
}

TEST(SystemLog, ALineHas4096Bytes) {
  const auto log = posix::make_system_log("quoll-test");
  const std::string longest(4096, 'x');
  log->write({longest});
  EXPECT_EQ(logged, longest);
  log->write({longest + "x"});
  EXPECT_EQ(logged, std::string(4093, 'x') + "\u2026") << "cut, and it shows";
}

}  // namespace
}  // namespace quoll
