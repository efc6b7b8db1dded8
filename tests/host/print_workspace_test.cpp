#include "apps/share/print_workspace.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"
#include "tests/support/recorders.h"

namespace quoll::share {
namespace {

using foundation::NSURL;
using Lines = std::vector<std::string>;

TEST(Printer, OneLineAUrl) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const posix::UniqueFd reading(ends[0]);
  posix::UniqueFd writing(ends[1]);
  EXPECT_TRUE(make_print_workspace(writing.get())
                  ->openURLs({NSURL::URLWithString("quoll://compose?")}, "x", {}));
  writing.reset();
  std::string printed;
  bool ended = false;
  ASSERT_TRUE(posix::read_until(reading.get(), printed, 4096, ended));
  EXPECT_EQ(printed, "quoll://compose?\n");
}

TEST(Printer, SaysWhyItCannot) {
  auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = log});
  EXPECT_FALSE(make_print_workspace(-1)->openURLs({NSURL::URLWithString("x:")}, "x", {}));
  EXPECT_EQ(log->lines(), Lines{"openURLs the URL cannot be written: bad file descriptor"});
  EXPECT_EQ(log->events().at(0).error->code, foundation::kNotOpenedError);
}

}  // namespace
}  // namespace quoll::share
