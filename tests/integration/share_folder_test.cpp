// A folder that is shared as one ZIP file, as a whole.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/folder_helper/zip_entries.h"
#include "tests/integration/mixed_files.h"
#include "tests/integration/share_home.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

class ShareFolder : public testing::Test {
 protected:
  ShareFolder() {
    fs::create_directories(home_.path("photos/more"));
    home_.write("photos/a.jpg", "AAAA");
    home_.write("photos/more/b.jpg", "BB");
  }

  ShareHome home_;
};

TEST_F(ShareFolder, IsOneZipFileAmongTheOthersAndIsSaid) {
  const std::string before = home_.write("before.txt", "x");
  const std::string after = home_.write("after.txt", "x");
  const Ended ended = home_.print({before, home_.path("photos"), after});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(ended.errors, "photos is a folder and is shared as photos.zip\n");
  EXPECT_EQ(names_of(attachments_of(ended.output)),
            (Names{"before.txt", "photos.zip", "after.txt"}));
  EXPECT_EQ(zip_entries(home_.staging() + "/photos.zip"),
            (Names{"photos/ 0 755", "photos/a.jpg 4 644", "photos/more/ 0 755",
                   "photos/more/b.jpg 2 644"}));
  EXPECT_FALSE(home_.has_received_files());
}

TEST_F(ShareFolder, TwoOfOneNameAreTwoFiles) {
  fs::create_directories(home_.path("x/photos"));
  const Ended ended = home_.print({home_.path("photos"), home_.path("x/photos/")});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(names_of(attachments_of(ended.output)), (Names{"photos.zip", "photos_1.zip"}));
}

TEST_F(ShareFolder, WhatIsNotPackedIsNamed) {
  fs::create_symlink("/etc/passwd", home_.path("photos/link"));
  const Ended ended = home_.print({home_.path("photos")});
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors,
            "photos is a folder and is shared as photos.zip\n"
            "left out: photos/link: it is a symbolic link\n");
}

TEST_F(ShareFolder, OneThatCannotBePackedIsLeftOut) {
  home_.write("photos/sparse", "");
  ASSERT_EQ(truncate(home_.path("photos/sparse").c_str(), off_t{1} << 40U), 0);
  const Ended ended = home_.print({home_.path("photos"), home_.write("a.txt", "x")});
  EXPECT_EQ(ended.status, 3);
  // A sanitizer speaks first in a process that may not look up its own stack.
  const std::string why = sandbox::kSanitizerBuild ? "" : "there is more than 4 GiB in it\n";
  EXPECT_NE(
      ended.errors.find("left out: " + home_.path("photos") + ": it cannot be packed: " + why),
      std::string::npos)
      << ended.errors;
  EXPECT_EQ(names_of(attachments_of(ended.output)), Names{"a.txt"});
  const Ended alone = home_.print({home_.path("photos")});
  EXPECT_EQ(alone.status, 1);
  EXPECT_EQ(alone.output, "");
}

TEST_F(ShareFolder, ASignalEndsTheHelperAndNothingStays) {
  home_.write("photos/large", "");
  ASSERT_EQ(truncate(home_.path("photos/large").c_str(), off_t{4'000'000'000}), 0);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Process share({QUOLL_SHARE, "--print", home_.path("photos")}, home_.environment());
    const std::string helpers =
        "/proc/" + std::to_string(share.id()) + "/task/" + std::to_string(share.id()) + "/children";
    while (!has_ended(share.id()) && read_file(helpers).empty()) {
      usleep(1000);
    }
    const pid_t helper = std::atoi(read_file(helpers).c_str());
    EXPECT_EQ(kill(share.id(), signal), 0);
    EXPECT_EQ(share.wait(), 128 + signal);
    EXPECT_NE(kill(helper, 0), 0);
    EXPECT_EQ(share.read_output(), "");
    EXPECT_FALSE(home_.has_received_files()) << signal;
  }
  EXPECT_FALSE(fs::exists(home_.staging())) << "the extension was not asked";
}

TEST_F(ShareFolder, SomebodyAtATerminalSeesHowFarItIs) {
  home_.write("photos/large", "");
  ASSERT_EQ(truncate(home_.path("photos/large").c_str(), off_t{4'000'000'000}), 0);
  const std::string screen = home_.write("screen", "");
  const std::string number = home_.path("number");
  Process terminal(
      {"script", "-qefc",
       "echo $$ >" + number + "; exec " QUOLL_SHARE " --print " + home_.path("photos"), screen},
      home_.environment());
  while (!has_ended(terminal.id()) &&
         read_file(screen).find("\r0 MB packed\033[K") == std::string::npos) {
    usleep(1000);
  }
  ASSERT_FALSE(has_ended(terminal.id())) << read_file(screen);
  EXPECT_EQ(kill(std::atoi(read_file(number).c_str()), SIGINT), 0);
  EXPECT_NE(terminal.wait(), 0);
  EXPECT_NE(read_file(screen).find("MB packed\033[K\r\033[K"), std::string::npos)
      << "nothing of it stays";
  EXPECT_FALSE(home_.has_received_files());
}

TEST_F(ShareFolder, MoreThan25MegabytesAreSaidBeforehand) {
  const std::string a = home_.write("a.bin", std::string(15'000'000, 'a'));
  const std::string b = home_.write("b.bin", std::string(10'000'000, 'b'));
  EXPECT_EQ(home_.print({a, b}).errors, "") << "as much as may be";
  const std::string c = home_.write("c.bin", std::string(1'600'000, 'c'));
  const Ended ended = home_.print({a, b, "https://h/", c});
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.errors,
            "the files have 27 MB in all; mail servers often refuse more than 25 MB\n");
}

}  // namespace
}  // namespace quoll::test
