#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <thread>

#include "tests/image_helper/fixture.h"
#include "tests/image_helper/sample_files.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

std::size_t open_descriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

class Helper : public ImageHelper {
 protected:
  /// A helper that is this script.
  std::shared_ptr<platform::Images> scripted(const std::string& script,
                                             std::chrono::milliseconds limit = 30s) {
    const std::string path = folder_.write("helper", "#!/bin/sh\n" + script + "\n");
    chmod(path.c_str(), 0700);
    return image_helper::make_images(path, limit);
  }
  void expect_nothing(platform::Images& images, const std::string& reason) {
    const std::size_t before = log_->lines().size();
    EXPECT_FALSE(images.convert(image_, BitmapImageFileType::NSBitmapImageFileTypePNG));
    ASSERT_EQ(log_->lines().size(), before + 1);
    EXPECT_NE(log_->lines().back().find(reason), std::string::npos) << log_->lines().back();
  }

  TemporaryFolder folder_;
  Bytes image_ = png_file(sample_image(20, 10, 3, 8));
};

TEST_F(Helper, WhatAHelperMayDoWrong) {
  struct Row {
    const char* script;
    const char* logged;
    const char* reason;
  };
  constexpr Row kRows[] = {
      {"kill -9 $$", "image: the helper was killed by signal 9", "killed, as by the kernel"},
      {"kill -11 $$", "image: the helper was killed by signal 11", "crashed"},
      {"exit 3", "image: the helper ended with status 3", "it says nothing"},
      {"echo no colours >&2; exit 1", "image: no colours", "it says why"},
      {"echo one >&2; echo two >&2; exit 1", "image: one", "one line is enough"},
      {"exit 0", "image: the helper gave no whole result", "it gave nothing"},
      {"echo half", "image: the helper gave no whole result", "its result is not sealed"},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.reason);
    const auto images = scripted(row.script);
    expect_nothing(*images, row.logged);
    EXPECT_FALSE(images->size(image_));
  }
}

TEST_F(Helper, OneThatIsMissingOrCannotBeRun) {
  for (const std::string& path :
       {folder_.path("absent"), folder_.path(), folder_.write("text", "no program")}) {
    expect_nothing(*image_helper::make_images(path), "cannot be started");
  }
}

TEST_F(Helper, OneThatTakesTooLongIsKilled) {
  expect_nothing(*scripted("exec sleep 1000", 200ms), "took too long");
  expect_nothing(*scripted("exec 2>&-; exec sleep 1000", 200ms), "took too long");
  expect_nothing(*scripted("while :; do echo much >&2; done", 200ms), "took too long");
}

TEST_F(Helper, NothingIsLeftBehind) {
  static_cast<void>(to_png(image_));
  const std::size_t before = open_descriptors();
  for (int i = 0; i < 5; ++i) {
    EXPECT_TRUE(to_png(image_));
    EXPECT_FALSE(to_png({1, 2, 3}));
    expect_nothing(*scripted("kill -9 $$"), "signal 9");
    expect_nothing(*image_helper::make_images(folder_.path("absent")), "cannot be started");
    expect_nothing(*scripted("exec sleep 1000", 50ms), "took too long");
  }
  EXPECT_EQ(open_descriptors(), before);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(Helper, ItGetsItsThreeStreamsAndNoOtherDescriptor) {
  // The shell reads its script from one more, and the listing opens its own.
  const auto images = scripted("ls /proc/self/fd | wc -l >&2; exit 1");
  expect_nothing(*images, "image: 4");
}

TEST_F(Helper, AProgramThatIgnoresItsChildrenGetsItsImages) {
  const auto before = std::signal(SIGCHLD, SIG_IGN);
  EXPECT_TRUE(to_png(image_));
  EXPECT_FALSE(to_png({1, 2, 3}));
  std::signal(SIGCHLD, before);
}

TEST_F(Helper, EightThreadsAtOnce) {
  std::atomic<int> right = 0;
  {
    std::vector<std::jthread> threads;
    for (unsigned t = 0; t < 8; ++t) {
      threads.emplace_back([&, t] {
        const SampleImage image = sample_image(100 + t, 80, 3, 8);
        const Bytes file = png_file(image);
        for (int i = 0; i < 5; ++i) {
          const auto png = to_png(file);
          const auto size = images_->size(file);
          if (png && read_png(*png) == image && size && size->width == image.width) {
            ++right;
          }
          static_cast<void>(to_png({}));
        }
      });
    }
  }
  EXPECT_EQ(right, 40);
}

TEST_F(Helper, WhereItIs) {
  ASSERT_EQ(setenv("QUOLL_IMAGE_HELPER", "/named/helper", 1), 0);
  EXPECT_EQ(image_helper::helper_path(), "/named/helper");
  unsetenv("QUOLL_IMAGE_HELPER");
  EXPECT_TRUE(std::filesystem::path(image_helper::helper_path()).is_absolute());
  EXPECT_TRUE(std::filesystem::equivalent(image_helper::helper_path(), QUOLL_TEST_IMAGE_HELPER));
}

}  // namespace
}  // namespace quoll::test
