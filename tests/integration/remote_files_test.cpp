// Files of other computers and of devices, where the desktop has them mounted. The desktops are
// doubles: a module of GIO, and a service on a bus of the test's own.
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <set>
#include <sstream>

#include "apps/sandbox/sanitizer_build.h"
#include "quoll/linux/gio/remote_files.h"
#include "tests/integration/mixed_files.h"
#include "tests/integration/private_bus.h"
#include "tests/integration/share_home.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr const char* kAdvice =
    ": it is a remote file; copy it to this computer first, or open its folder in the file "
    "manager\n";

class RemoteFilesTest : public testing::Test {
 protected:
  RemoteFilesTest() {
    fs::create_directory(home_.path("mounted"));
    for (const char* const name : {"mounted/a b.pdf", "mounted/c.txt"}) {
      home_.write(name, name);
    }
    Environment& environment = home_.environment();
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus_.environment().at("DBUS_SESSION_BUS_ADDRESS");
    environment["GIO_MODULE_DIR"] = home_.path("no-modules");
  }
  void load_module() {
    Environment& environment = home_.environment();
    environment["QUOLL_MOUNTED"] = home_.path("mounted");
    environment["GIO_MODULE_DIR"] = fs::path(VFS_DOUBLE).parent_path().string();
  }

  const PrivateBus bus_;
  ShareHome home_;
};

TEST_F(RemoteFilesTest, AreReadWhereGioHasThem) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "the module is not built with a sanitizer's runtime of its own";
  }
  load_module();
  const std::string local = home_.write("local.txt", "x");
  const Ended ended =
      home_.print({"smb://gnome/a%20b.pdf", local, "SMB://gnome/c.txt", "smb://gnome/a b.pdf"});
  EXPECT_EQ(names_of(attachments_of(ended.output)), (Names{"a b.pdf", "local.txt", "a b_1.pdf"}));
  EXPECT_EQ(read_file(home_.staging() + "/a b.pdf"), "mounted/a b.pdf");
  EXPECT_EQ(ended.errors, "left out: SMB://gnome/c.txt" + std::string(kAdvice))
      << "this module knows small letters only";
  std::istringstream loaded(read_file(home_.path("mounted/pids")));
  const std::set<pid_t> processes{std::istream_iterator<pid_t>(loaded), {}};
  ASSERT_EQ(processes.size(), 1U) << "one for all";
  EXPECT_NE(kill(*processes.begin(), 0), 0) << "and it has ended";
}

TEST_F(RemoteFilesTest, AreReadWhereKdeMountsThem) {
  bus_.add_service("org.kde.KIOFuse", MOUNT_DOUBLE " " + home_.path("mounted"));
  const Ended ended = home_.print({"smb://kde/a%20b.pdf", "mtp://other/c.txt", "smb://kde/"});
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors,
            "mounted is a folder and is shared as mounted.zip\n"
            "left out: mtp://other/c.txt" +
                std::string(kAdvice));
  EXPECT_EQ(names_of(attachments_of(ended.output)), (Names{"a b.pdf", "mounted.zip"}));
}

TEST_F(RemoteFilesTest, WhatIsMountedAndGoneIsNoFile) {
  bus_.add_service("org.kde.KIOFuse", MOUNT_DOUBLE " " + home_.path("mounted"));
  const Ended ended = home_.print({"smb://kde/gone.txt"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(ended.errors.starts_with("left out: smb://kde/gone.txt: no such file\n"))
      << ended.errors;
}

TEST_F(RemoteFilesTest, AreLeftOutWhereNobodyHasThem) {
  home_.environment()["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nowhere";
  const Ended ended = home_.print({"smb://kde/a%20b.pdf", "mtp://phone/a.jpg", "https://h/"});
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors, "left out: smb://kde/a%20b.pdf" + std::string(kAdvice) +
                              "left out: mtp://phone/a.jpg" + kAdvice);
}

TEST_F(RemoteFilesTest, ADesktopThatDoesNotAnswerIsGivenUpOnce) {
  bus_.add_service("org.kde.KIOFuse", MOUNT_DOUBLE " " + home_.path("mounted"));
  const Environment& environment = home_.environment();
  for (const char* const name : {"DBUS_SESSION_BUS_ADDRESS", "GIO_MODULE_DIR"}) {
    ASSERT_EQ(setenv(name, environment.at(name)->c_str(), 1), 0);
  }
  using namespace std::chrono_literals;
  gio::RemoteFiles files(2s);
  EXPECT_EQ(files.local_path("smb://kde/c.txt"), home_.path("mounted/c.txt"));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(files.local_path("smb://silent/c.txt"), std::nullopt);
  EXPECT_EQ(files.local_path("smb://kde/c.txt"), std::nullopt);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 4s);
}

TEST_F(RemoteFilesTest, ADesktopThatDoesNotAnswerIsNotWaitedForByWhoGoesAway) {
  bus_.add_service("org.kde.KIOFuse", MOUNT_DOUBLE " " + home_.path("mounted"));
  auto command = ShareHome::command({"--print", "data:,first", "smb://silent/c.txt"});
  Process share(command, home_.environment());
  while (!has_ended(share.id()) && !home_.has_received_files()) {
    usleep(1000);
  }
  usleep(200'000);  // until it asks
  EXPECT_EQ(kill(share.id(), SIGINT), 0);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(share.wait(), 128 + SIGINT);
  using namespace std::chrono_literals;
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 2s);
  EXPECT_FALSE(home_.has_received_files());
}

}  // namespace
}  // namespace quoll::test
