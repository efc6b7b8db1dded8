#include "apps/share/prepare.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "apps/share/interruption.h"
#include "quoll/linux/posix/files.h"
#include "tests/support/recorders.h"
#include "tests/support/temporary_folder.h"

namespace quoll::share {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

ino_t inode_of(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_ino;
}

class Prepare : public testing::Test {
 protected:
  Selection select(Names items) {
    return make_selection({{}, {}, {}, std::move(items)}, container_.path());
  }
  static std::string path_of(const SharedItem& item) {
    return foundation::file_system_path(item.value().as<foundation::NSURL>()).value_or("");
  }

  test::TemporaryFolder container_;
  test::TemporaryFolder home_;
  std::shared_ptr<test::RecordingLog> log_ = std::make_shared<test::RecordingLog>();
  platform::ScopedDesktop desktop_{{.log = log_}};
  MovingFiles files_{posix::make_file_manager()};
};

TEST_F(Prepare, FilesLieReadyUnderTheirNamesAndAreMoved) {
  const std::string picked = home_.write("a.txt", "x");
  Selection selection = select({picked, "https://h/", picked, "data:,hello"});
  ASSERT_TRUE(prepare(selection, files_, "/no/helper"));
  ASSERT_EQ(selection.items.size(), 4U);
  Names moved;
  for (const std::size_t at : {0U, 2U, 3U}) {
    const std::string path = path_of(*selection.items[at]);
    EXPECT_TRUE(path.starts_with(container_.path(".incoming/"))) << path;
    const ino_t inode = inode_of(path);
    moved.push_back(home_.path("moved" + std::to_string(at)));
    EXPECT_EQ(files_.copyItemAtPath(path, moved.back()), std::nullopt);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(inode_of(moved.back()), inode) << "not copied";
  }
  EXPECT_EQ(test::read_file(moved[0]), "x");
  EXPECT_EQ(test::read_file(moved[2]), "hello");
  EXPECT_EQ(selection.items[0]->given(), picked);
  EXPECT_TRUE(fs::exists(picked));
}

TEST_F(Prepare, WhatWasNotPreparedIsCopied) {
  const std::string other = home_.write("b.txt", "x");
  EXPECT_EQ(files_.copyItemAtPath(other, home_.path("copy")), std::nullopt);
  EXPECT_TRUE(fs::exists(other));
}

TEST_F(Prepare, NothingIsReplacedByAMove) {
  Selection selection = select({home_.write("a.txt", "x")});
  ASSERT_TRUE(prepare(selection, files_, "/no/helper"));
  const std::string there = home_.write("there", "own");
  const auto error = files_.copyItemAtPath(path_of(*selection.items[0]), there);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code, foundation::NSFileWriteFileExistsError);
  EXPECT_EQ(test::read_file(there), "own");
}

TEST_F(Prepare, AFileThatIsGoneIsLeftOut) {
  const std::string gone = home_.write("gone.txt", "x");
  Selection selection = select({gone, home_.write("a.txt", "x")});
  fs::remove(gone);
  ASSERT_TRUE(prepare(selection, files_, "/no/helper"));
  ASSERT_EQ(selection.items.size(), 1U);
  ASSERT_EQ(selection.left_out.size(), 1U);
  EXPECT_EQ(selection.left_out[0].what, gone);
  EXPECT_EQ(selection.left_out[0].why, "no such file or directory");
  ASSERT_EQ(log_->lines().size(), 1U);
  EXPECT_TRUE(log_->lines()[0].starts_with("prepare ")) << log_->lines()[0];
}

TEST_F(Prepare, WithoutAPlaceTheFileIsLeftToTheExtension) {
  const std::string picked = home_.write("a.txt", "x");
  Selection selection = select({picked});
  std::ofstream(container_.path(".incoming")) << "in the way";
  ASSERT_TRUE(prepare(selection, files_, "/no/helper"));
  ASSERT_EQ(selection.items.size(), 1U);
  EXPECT_EQ(path_of(*selection.items[0]), picked);
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(Prepare, WithoutAContainerNothingIsPrepared) {
  const std::string picked = home_.write("a.txt", "x");
  Selection selection = make_selection({{}, {}, {}, {picked}}, std::nullopt);
  ASSERT_TRUE(prepare(selection, files_, "/no/helper"));
  EXPECT_EQ(path_of(*selection.items.at(0)), picked);
}

TEST_F(Prepare, ASignalEndsIt) {
  Selection selection = select({home_.write("a.txt", "x"), home_.write("b.txt", "x")});
  {
    const Interruption interruption;
    EXPECT_FALSE(Interruption::has_come());
    ASSERT_EQ(raise(SIGTERM), 0);
    EXPECT_TRUE(Interruption::has_come());
    EXPECT_FALSE(prepare(selection, files_, "/no/helper"));
  }
  EXPECT_FALSE(Interruption::has_come());
  selection.prepared_files.reset();
  EXPECT_TRUE(fs::is_empty(container_.path(".incoming")));
}

TEST_F(Prepare, TellsHowFarItIs) {
  Names items;
  for (int number = 0; number < 200; ++number) {
    items.push_back(home_.write(std::to_string(number), "x"));
  }
  Selection selection = select(items);
  std::size_t last = 0;
  ASSERT_TRUE(prepare(selection, files_, "/no/helper", [&](std::size_t ready, std::size_t all) {
    EXPECT_GE(ready, last);
    EXPECT_EQ(all, 200U * 100);
    last = ready;
  }));
  EXPECT_GT(last, 0U);
}

}  // namespace
}  // namespace quoll::share
