#include "quoll/container/property_list_files.h"

#include <gtest/gtest.h>

#include "quoll/platform/desktop.h"
#include "tests/support/memory_files.h"
#include "tests/support/recorders.h"

namespace quoll::container {
namespace {

using foundation::Bytes;
using foundation::List;
using foundation::NSURL;
using foundation::Value;

class PropertyListFiles : public ::testing::Test {
 protected:
  [[nodiscard]] std::shared_ptr<NSURL> file(std::string_view content) const {
    EXPECT_FALSE(files_->writeToFile(Bytes(content.begin(), content.end()), "/home/a b.plist", {}));
    return NSURL::file_url("/home/a b.plist", false);
  }

  std::shared_ptr<test::RecordingLog> log_ = std::make_shared<test::RecordingLog>();
  std::shared_ptr<test::MemoryFiles> files_ = std::make_shared<test::MemoryFiles>();
  platform::ScopedDesktop desktop_{platform::Desktop{.files = files_, .log = log_}};
};

TEST_F(PropertyListFiles, ReadsAListAtTheRoot) {
  EXPECT_EQ(Value(array_with_contents_of_url(file("(a, b)"))), Value(List{"a", "b"}));
}

TEST_F(PropertyListFiles, AnswersNullAndLogsNothingOtherwise) {
  EXPECT_FALSE(array_with_contents_of_url(nullptr));
  EXPECT_FALSE(array_with_contents_of_url(NSURL::file_url("/home/missing.plist", false)));
  EXPECT_FALSE(array_with_contents_of_url(NSURL::file_url("/home", true))) << "a folder";
  EXPECT_FALSE(array_with_contents_of_url(file("{a = b;}"))) << "a dictionary";
  EXPECT_FALSE(array_with_contents_of_url(file("abc"))) << "a text";
  EXPECT_FALSE(array_with_contents_of_url(file("(a"))) << "broken";
  EXPECT_FALSE(array_with_contents_of_url(file("")));
  EXPECT_TRUE(file("(a)"));
  EXPECT_FALSE(array_with_contents_of_url(NSURL::URLWithString("http://h/home/a%20b.plist")))
      << "no file URL";
  EXPECT_TRUE(log_->lines().empty());
}

}  // namespace
}  // namespace quoll::container
