// What may happen to files while they are prepared, and how much of it there may be.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <list>

#include "apps/share/progress_pipe.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "tests/integration/preparing.h"
#include "tests/support/tiff_picture.h"

namespace quoll::test {
namespace {

using Names = std::vector<std::string>;

class PreparingInTrouble : public Preparing {
 protected:
  /// Shares a file of so many bytes, of which it has `later` once its copy has begun. Answers what
  /// was staged.
  std::string staged_of(std::size_t size, std::size_t later) {
    const std::string file = home_.write("file", std::string(size, 'x'));
    Process share(slowly("1", {file}), home_.environment());
    wait_until_it_prepares(share);
    fs::resize_file(file, later);
    EXPECT_EQ(share.wait(), 0) << share.errors();
    return read_file(home_.staging() + "/file");
  }
};

TEST_F(PreparingInTrouble, AFileThatGrowsIsCopiedAsItWas) {
  EXPECT_EQ(staged_of(100'000, 900'000), std::string(100'000, 'x'));
}

TEST_F(PreparingInTrouble, AFileThatShrinksIsCopiedUpToItsEnd) {
  EXPECT_EQ(staged_of(100'000, 5000), std::string(5000, 'x'));
}

TEST_F(PreparingInTrouble, AMountThatDisappearsLeavesOutWhatWasOnIt) {
  const std::string large = home_.write("large", std::string(100'000, 'x'));
  const std::string small = home_.write("small", "x");
  for (const int error : {EIO, ESTALE, ENOTCONN}) {
    auto environment = home_.environment();
    environment["QUOLL_COPY_ERROR"] = std::to_string(error);
    const Ended ended = run(slowly("0", {large, small}), environment);
    EXPECT_EQ(ended.status, 3);
    EXPECT_EQ(ended.errors, "left out: " + large + ": " + posix::error_words(error) + "\n");
    EXPECT_EQ(names_of(attachments_of(ended.output)), Names{"small"});
    EXPECT_FALSE(home_.has_received_files());
    const Ended nothing = run(slowly("0", {large}), environment);
    EXPECT_EQ(nothing.status, 1);
    EXPECT_EQ(nothing.output, "");
  }
}

TEST_F(PreparingInTrouble, TwoHundredPhotosFromASlowPlaceArriveAndTheProgressIsSeen) {
  Names photos;
  for (int number = 0; number < 200; ++number) {
    photos.push_back(home_.write(std::to_string(number) + ".jpg", std::string(1000, 'x')));
  }
  auto environment = home_.environment();
  environment["QUOLL_SLOW_PIECE"] = "55";
  posix::Pipe pipe = posix::make_pipe();
  constexpr int kNumber = 20;
  ASSERT_EQ(dup2(pipe.writing.get(), kNumber), kNumber);
  Names arguments{"--progress", std::to_string(kNumber)};
  arguments.insert(arguments.end(), photos.begin(), photos.end());
  const auto begin = std::chrono::steady_clock::now();
  Process share(slowly("0", arguments), environment);
  close(kNumber);
  pipe.writing.reset();
  std::string lines;
  bool ended = false;
  ASSERT_TRUE(posix::read_until(pipe.reading.get(), lines, 1 << 20U, ended));
  EXPECT_EQ(share.wait(), 0) << share.errors();
  EXPECT_GT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(11));
  EXPECT_EQ(names_of(attachments_of(share.read_output())), names_of(photos));
  std::istringstream steps(lines);
  std::size_t seen = 0;
  long last = -1;
  for (long done = 0, all = 0; steps >> done >> all && all == 2 * 200 * 100 + 1; ++seen) {
    EXPECT_GE(done, last);
    last = done;
  }
  EXPECT_GT(seen, 50U);
  EXPECT_TRUE(share::has_turn(lines));
}

TEST_F(PreparingInTrouble, ManySharesThatPrepareAtOnceAllArrive) {
  const int count = number_from("QUOLL_TEST_SHARES", 40);
  auto environment = home_.environment();
  environment["QUOLL_SLOW_PIECE"] = "1000";
  std::list<Process> shares;
  Names files;
  for (int number = 0; number < count; ++number) {
    files.push_back(home_.write("file" + std::to_string(number), std::to_string(number)));
    shares.emplace_back(slowly("0", {files.back(), "data:," + std::to_string(number)}),
                        environment);
  }
  std::size_t at = 0;
  for (Process& share : shares) {
    EXPECT_EQ(share.wait(), 0) << share.errors();
    EXPECT_EQ(names_of(attachments_of(share.read_output())),
              (Names{"file" + std::to_string(at), "data.txt"}));
    ++at;
  }
  EXPECT_FALSE(home_.has_received_files());
}

class PreparedInTrouble : public Preparing {
 protected:
  void SetUp() override {}
};

TEST_F(PreparedInTrouble, FiveGigabytesWithHolesArriveWithTheirHoles) {
  const std::string file = home_.write("large.img", "begin");
  constexpr std::uintmax_t kSize = 5'000'000'000;
  fs::resize_file(file, kSize);
  std::ofstream(file, std::ios::binary | std::ios::app) << "end";
  const Ended ended = home_.print({file});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  const std::string staged = home_.staging() + "/large.img";
  EXPECT_EQ(attachments_of(ended.output), Names{staged});
  struct stat status {};
  ASSERT_EQ(stat(staged.c_str(), &status), 0);
  EXPECT_EQ(static_cast<std::uintmax_t>(status.st_size), kSize + 3);
  EXPECT_LT(status.st_blocks, 1000);
  std::ifstream content(staged, std::ios::binary);
  content.seekg(kSize);
  std::string end;
  content >> end;
  EXPECT_EQ(end, "end");
}

/// The containers lie on a small file system of their own.
class PreparingWithoutRoom : public PreparedInTrouble {
 protected:
  void SetUp() override {
    is_mounted_ = mount("tmpfs", folder().c_str(), "tmpfs", 0, "size=1m") == 0;
    if (!is_mounted_) {
      const char* const ci = std::getenv("CI");
      ASSERT_FALSE(ci != nullptr && std::string(ci) == "true") << std::strerror(errno);
      GTEST_SKIP() << "cannot mount: " << std::strerror(errno);
    }
  }
  ~PreparingWithoutRoom() override {
    if (is_mounted_) {
      umount2(folder().c_str(), MNT_DETACH);
    }
  }
  [[nodiscard]] std::string folder() const { return home_.path("containers"); }

  bool is_mounted_ = false;
};

TEST_F(PreparingWithoutRoom, WhatFitsOnceTheShareBeforeIsGoneArrives) {
  const std::string content(700'000, 'x');
  const std::string file = home_.write("file", content);
  const std::string picture = home_.write("picture", tiff_picture(500, 400));
  for (int time = 0; time < 2; ++time) {
    const Ended ended = home_.print({file});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(read_file(home_.staging() + "/file"), content);
    const Ended image = home_.print({"-"}, picture);
    EXPECT_EQ(image.status, 0) << image.errors;
    EXPECT_GT(fs::file_size(home_.staging() + "/image.png"), 600'000U);
    EXPECT_FALSE(home_.has_received_files());
  }
}

TEST_F(PreparingWithoutRoom, WhatNeverFitsIsLeftOutAndLeavesNothing) {
  const std::string file = home_.write("file", std::string(2 << 20U, 'x'));
  const std::string small = home_.write("small", "x");
  const Ended ended = home_.print({file, small});
  EXPECT_EQ(ended.status, 3);
  EXPECT_TRUE(ended.errors.starts_with("left out: " + file + ": no space left on device\n"))
      << ended.errors;
  EXPECT_EQ(names_of(attachments_of(ended.output)), Names{"small"});
  EXPECT_FALSE(home_.has_received_files());
}

}  // namespace
}  // namespace quoll::test
