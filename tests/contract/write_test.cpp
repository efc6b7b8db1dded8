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
using foundation::Error;

class Write : public ::testing::Test {
 protected:
  bool write(const Bytes& data, const std::string& name,
             platform::NSDataWritingOptions options = platform::NSDataWritingAtomic) {
    return !files_->writeToFile(data, folder_.path(name), options);
  }
  platform::FileContents read(const std::string& path) { return files_->contentsAtPath(path); }

  test::TemporaryFolder folder_;
  std::shared_ptr<platform::NSFileManager> files_ = posix::make_file_manager();
};

TEST_F(Write, TheModeIsWhatTheUmaskLeaves) {
  const mode_t before = ::umask(027);
  EXPECT_TRUE(write({'a'}, "x"));
  EXPECT_TRUE(write({'a'}, "y", {}));
  ::umask(before);
  for (const char* name : {"x", "y"}) {
    EXPECT_EQ(fs::status(folder_.path(name)).permissions(), fs::perms(0640)) << name;
  }
}

TEST_F(Write, AnAtomicWriteReplacesALinkNotWhatItNames) {
  folder_.write("kept", "content");
  fs::create_symlink("kept", folder_.path("link"));
  EXPECT_TRUE(write({'a'}, "link"));
  EXPECT_EQ(test::read_file(folder_.path("kept")), "content");
  EXPECT_EQ(test::read_file(folder_.path("link")), "a");
}

TEST_F(Write, AReaderSeesAllOfOneOrAllOfTheOther) {
  constexpr std::size_t kSize = 1 << 20;
  ASSERT_TRUE(write(Bytes(kSize, 'a'), "x"));
  std::thread writer([&] {
    const auto files = posix::make_file_manager();
    for (int i = 0; i < 50; ++i) {
      EXPECT_FALSE(files->writeToFile(Bytes(kSize, i % 2 == 0 ? 'b' : 'a'), folder_.path("x"),
                                      platform::NSDataWritingAtomic));
    }
  });
  for (int i = 0; i < 50; ++i) {
    const auto contents = read(folder_.path("x"));
    const auto* const bytes = std::get_if<Bytes>(&contents);
    ASSERT_NE(bytes, nullptr);
    EXPECT_TRUE(*bytes == Bytes(kSize, bytes->front()));
  }
  writer.join();
}

TEST_F(Write, NothingHiddenIsLeft) {
  fs::create_directory(folder_.path("f"));
  EXPECT_FALSE(write({'a'}, "f"));
  EXPECT_FALSE(write({'a'}, std::string(300, 'n')));
  EXPECT_TRUE(write({'a'}, "x"));
  const fs::directory_iterator left(folder_.path());
  EXPECT_EQ(std::distance(begin(left), end(left)), 2);
}

TEST_F(Write, APipeIsNeverWaitedFor) {
  ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  EXPECT_FALSE(write({'a'}, "pipe", {}));
  EXPECT_TRUE(std::holds_alternative<Error>(read(folder_.path("pipe"))));
}

TEST_F(Write, ReadingKnowsItsLimits) {
  EXPECT_TRUE(std::holds_alternative<Error>(read("/dev/zero"))) << "no regular file";
  const auto status = read("/proc/self/status");
  ASSERT_TRUE(std::holds_alternative<Bytes>(status)) << "claims to be empty";
  EXPECT_FALSE(std::get<Bytes>(status).empty());
  folder_.write("huge", "");
  fs::resize_file(folder_.path("huge"), (std::uintmax_t{1} << 30) + 1);
  const auto huge = read(folder_.path("huge"));
  ASSERT_TRUE(std::holds_alternative<Error>(huge));
  EXPECT_EQ(std::get<Error>(huge).code, foundation::NSFileReadTooLargeError);
}

}  // namespace
}  // namespace quoll
