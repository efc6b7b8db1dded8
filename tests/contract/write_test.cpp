#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <thread>

#include "quoll/linux/posix/files.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

namespace fs = std::filesystem;
using foundation::Bytes;

class Write : public ::testing::Test {
 protected:
  bool write(const Bytes& data, const std::string& name, unsigned options) {
    return files_->writeToFile(data, folder_.path(name), options, error_);
  }

  test::TemporaryFolder folder_;
  std::shared_ptr<platform::NSFileManager> files_ = posix::make_file_manager();
  std::optional<foundation::Error> error_;
};

TEST_F(Write, TheModeIsWhatTheUmaskLeaves) {
  const mode_t before = ::umask(027);
  EXPECT_TRUE(write({'a'}, "x", platform::NSDataWritingAtomic));
  EXPECT_TRUE(write({'a'}, "y", 0));
  ::umask(before);
  for (const char* name : {"x", "y"}) {
    EXPECT_EQ(fs::status(folder_.path(name)).permissions(), fs::perms(0640)) << name;
  }
}

TEST_F(Write, AnAtomicWriteReplacesALinkNotWhatItNames) {
  folder_.write("kept", "content");
  fs::create_symlink("kept", folder_.path("link"));
  EXPECT_TRUE(write({'a'}, "link", platform::NSDataWritingAtomic));
  EXPECT_EQ(test::read_file(folder_.path("kept")), "content");
  EXPECT_EQ(test::read_file(folder_.path("link")), "a");
}

TEST_F(Write, AReaderSeesAllOfOneOrAllOfTheOther) {
  constexpr std::size_t kSize = 1 << 20;
  ASSERT_TRUE(write(Bytes(kSize, 'a'), "x", platform::NSDataWritingAtomic));
  std::thread writer([&] {
    const auto files = posix::make_file_manager();
    std::optional<foundation::Error> error;
    for (int i = 0; i < 50; ++i) {
      EXPECT_TRUE(files->writeToFile(Bytes(kSize, i % 2 == 0 ? 'b' : 'a'), folder_.path("x"),
                                     platform::NSDataWritingAtomic, error));
    }
  });
  for (int i = 0; i < 50; ++i) {
    const auto read = files_->contentsAtPath(folder_.path("x"), error_);
    ASSERT_TRUE(read);
    EXPECT_TRUE(*read == Bytes(kSize, read->front()));
  }
  writer.join();
}

TEST_F(Write, NothingHiddenIsLeft) {
  fs::create_directory(folder_.path("f"));
  EXPECT_FALSE(write({'a'}, "f", platform::NSDataWritingAtomic));
  EXPECT_FALSE(write({'a'}, std::string(300, 'n'), platform::NSDataWritingAtomic));
  EXPECT_TRUE(write({'a'}, "x", platform::NSDataWritingAtomic));
  const fs::directory_iterator left(folder_.path());
  EXPECT_EQ(std::distance(begin(left), end(left)), 2);
}

TEST_F(Write, APipeIsNeverWaitedFor) {
  ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  EXPECT_FALSE(write({'a'}, "pipe", 0));
  EXPECT_FALSE(files_->contentsAtPath(folder_.path("pipe"), error_));
}

TEST_F(Write, ReadingKnowsItsLimits) {
  EXPECT_FALSE(files_->contentsAtPath("/dev/zero", error_)) << "no regular file";
  const auto status = files_->contentsAtPath("/proc/self/status", error_);
  ASSERT_TRUE(status) << "claims to be empty";
  EXPECT_FALSE(status->empty());
  folder_.write("huge", "");
  fs::resize_file(folder_.path("huge"), (std::uintmax_t{1} << 30) + 1);
  EXPECT_FALSE(files_->contentsAtPath(folder_.path("huge"), error_));
  EXPECT_EQ(error_->code, foundation::NSFileReadTooLargeError);
}

}  // namespace
}  // namespace quoll
