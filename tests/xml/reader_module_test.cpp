#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "quoll/linux/xml/styled_text.h"
#include "quoll/platform/desktop.h"
#include "tests/support/recorders.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

bool parser_is_loaded() {
  return test::read_file("/proc/self/maps").find("libxml2") != std::string::npos;
}

/// Each runs in a process of its own, in which no other test has loaded anything.
class ReaderModule : public testing::Test {
 protected:
  ReaderModule() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ReaderModule, IsNotLoadedForWriting) {
  EXPECT_EXIT(
      {
        const auto text = xml::make_styled_text(false);
        const bool written = text->to_html(platform::NSAttributedString("a")).has_value();
        std::exit(written && !parser_is_loaded() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(ReaderModule, IsLoadedAtOnceForReading) {
  EXPECT_EXIT(
      {
        const auto text = xml::make_styled_text(true);
        std::exit(parser_is_loaded() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(ReaderModule, ReadsNothingWhenItWasNotAskedFor) {
  const auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = log});
  EXPECT_EQ(xml::make_styled_text(false)->from_html("<p>a"), nullptr);
  EXPECT_EQ(log->lines(),
            std::vector<std::string>{"the HTML text cannot be read: this program reads no HTML"});
}

/// Run by the next test, from a folder without the module.
TEST_F(ReaderModule, DISABLED_Missing) {
  const auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = log});
  const auto text = xml::make_styled_text(true);
  EXPECT_TRUE(text->to_html(platform::NSAttributedString("a")));
  EXPECT_EQ(text->from_html("<p>a"), nullptr);
  ASSERT_EQ(log->lines().size(), 1U);
  EXPECT_NE(log->lines().front().find("quoll-html-reader.so: cannot open"), std::string::npos)
      << log->lines().front();
}

TEST_F(ReaderModule, MayBeMissing) {
  const test::TemporaryFolder folder;
  const std::string program = folder.path("program");
  std::filesystem::copy_file("/proc/self/exe", program);
  const std::string command =
      "'" + program + "' --gtest_also_run_disabled_tests --gtest_filter='*DISABLED_Missing'";
  EXPECT_EQ(std::system((command + " > '" + folder.path("out") + "' 2>&1").c_str()), 0);
  const std::string output = test::read_file(folder.path("out"));
  EXPECT_NE(output.find("[  PASSED  ] 1 test"), std::string::npos) << output;
}

}  // namespace
}  // namespace quoll
