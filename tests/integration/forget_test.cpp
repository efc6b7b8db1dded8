// quollctl forget: what shares leave behind is removed, and no share loses its files by that.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "quoll/linux/posix/unique_fd.h"
#include "tests/integration/share_home.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;

class Forget : public testing::Test {
 protected:
  [[nodiscard]] Ended control(const std::vector<std::string>& words) {
    std::vector<std::string> command{QUOLLCTL};
    command.insert(command.end(), words.begin(), words.end());
    return run(command, home_.environment());
  }

  ShareHome home_;
};

TEST_F(Forget, TheCopiesOfTheLastShareAreRemoved) {
  ASSERT_EQ(home_.print({home_.write("a", "12345"), home_.write("b", "x")}).status, 0);
  const Ended told = control({"doctor"});
  EXPECT_NE(told.output.find("shared copies"), std::string::npos);
  EXPECT_NE(told.output.find("2 files (1 KiB) of the last share, until the next one, in " +
                             home_.staging()),
            std::string::npos)
      << told.output;
  EXPECT_NE(told.output.find("-> quollctl forget removes them now"), std::string::npos);
  const Ended ended = control({"forget"});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(ended.output, "2 files (1 KiB) removed\n");
  EXPECT_EQ(ended.errors, "");
  EXPECT_TRUE(fs::is_empty(home_.staging()));
  EXPECT_EQ(control({"forget", "--json"}).output, "{\"removed\":0,\"bytes\":0}\n");
  EXPECT_EQ(control({"forget"}).output, "there was nothing\n");
}

TEST_F(Forget, WhatAKilledShareLeftGoesToo) {
  fs::create_directories(home_.container() + "/.incoming/.quoll-incoming-1/1");
  fs::create_directories(home_.container() + "/.incoming/another's");
  EXPECT_EQ(control({"forget"}).status, 0);
  EXPECT_FALSE(fs::exists(home_.container() + "/.incoming/.quoll-incoming-1"));
  EXPECT_TRUE(fs::exists(home_.container() + "/.incoming/another's"));
}

/// While somebody holds this lock, the files stay.
void expect_to_wait_for(const ShareHome& home, const Environment& environment,
                        const std::string& lock) {
  SCOPED_TRACE(lock);
  fs::create_directories(home.container() + "/.locks");
  const std::string path = home.container() + "/.locks/" + lock;
  posix::UniqueFd held(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(flock(held.get(), LOCK_EX), 0);
  Process forget({QUOLLCTL, "forget"}, environment);
  EXPECT_TRUE(waits_for_lock(forget.id()));
  EXPECT_TRUE(fs::exists(home.staging() + "/a"));
  held.reset();
  EXPECT_EQ(forget.wait(), 0);
  EXPECT_FALSE(fs::exists(home.staging() + "/a"));
}

TEST_F(Forget, AShareThatIsUnderWayKeepsItsFiles) {
  for (const char* lock : {"turn", "%2FSharedData%2FShare.lock"}) {
    ASSERT_EQ(home_.print({home_.write("a", "x")}).status, 0);
    expect_to_wait_for(home_, home_.environment(), lock);
  }
}

TEST_F(Forget, AStoppedShareIsNamedToSomebodyAtATerminal) {
  fs::create_directories(home_.container() + "/.locks");
  const Process holder({"flock", "-o", home_.container() + "/.locks/turn", "sh", "-c",
                        "kill -STOP $PPID; touch " + home_.path("held")});
  while (!fs::exists(home_.path("held"))) {
    usleep(1000);
  }
  const std::string number = std::to_string(holder.id());
  Process forget({"script", "-qefc", QUOLLCTL " forget", "/dev/null"}, home_.environment());
  const std::string told = forget.read_line();
  EXPECT_TRUE(told == "waiting for another share (flock, process " + number +
                          "), which was stopped; kill -CONT " + number + " lets it go on\r" ||
              told == "waiting for another share to finish\r")
      << told;
  EXPECT_EQ(kill(holder.id(), SIGKILL), 0);
}

TEST_F(Forget, WithoutTheLockNothingIsRemoved) {
  ASSERT_EQ(home_.print({home_.write("a", "x")}).status, 0);
  const std::string turn = home_.container() + "/.locks/turn";
  fs::remove(turn);
  fs::create_symlink("/nowhere", turn);
  const Ended ended = control({"forget"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.output, "");
  EXPECT_EQ(ended.errors,
            "quollctl: the lock of the shares cannot be had; quollctl doctor tells more\n");
  EXPECT_TRUE(fs::exists(home_.staging() + "/a"));
}

TEST_F(Forget, NothingIsRemovedThroughALink) {
  const std::string kept = home_.path("own/Share/kept");
  for (const std::string& link : {home_.staging(), home_.container() + "/SharedData"}) {
    SCOPED_TRACE(link);
    fs::create_directories(fs::path(kept).parent_path());
    std::ofstream(kept) << "the user's own";
    fs::remove_all(home_.container());
    fs::create_directories(fs::path(link).parent_path());
    fs::create_directory_symlink(home_.path("own"), link);
    const Ended ended = control({"forget"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors,
              "quollctl: " + link + " cannot be read: not a directory; nothing was removed\n");
    EXPECT_TRUE(fs::exists(kept));
    EXPECT_TRUE(fs::is_symlink(link));
    const Ended told = control({"doctor"});
    EXPECT_NE(told.output.find("not known: " + link + " cannot be read: not a directory"),
              std::string::npos)
        << told.output;
  }
}

TEST_F(Forget, DeepFoldersAreCountedAndRemovedWithFewDescriptors) {
  fs::create_directories(home_.staging());
  posix::UniqueFd here(open(home_.staging().c_str(), O_PATH | O_CLOEXEC));
  constexpr int kDeep = 300;
  for (int depth = 0; depth < kDeep; ++depth) {
    ASSERT_EQ(mkdirat(here.get(), "d", S_IRWXU), 0);
    here = posix::UniqueFd(openat(here.get(), "d", O_PATH | O_CLOEXEC));
  }
  ASSERT_TRUE(posix::UniqueFd(openat(here.get(), "f", O_WRONLY | O_CREAT | O_CLOEXEC, 0600)));
  const Ended ended =
      run({"sh", "-c", "ulimit -n 64; exec " QUOLLCTL " forget"}, home_.environment());
  EXPECT_EQ(ended.output, "1 file (0 KiB) removed\n") << ended.errors;
  EXPECT_TRUE(fs::is_empty(home_.staging()));
}

TEST_F(Forget, WithoutAPlaceItSaysSo) {
  home_.environment()["QUOLL_GROUP_CONTAINERS"] = "relative";
  const Ended ended = control({"forget"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors,
            "quollctl: the shared folder cannot be used; quollctl doctor tells more\n");
}

}  // namespace
}  // namespace quoll::test
