#include "quoll/linux/posix/group_containers.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include "quoll/linux/posix/files.h"
#include "quoll/linux/posix/paths.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

void set(const char* name, const char* value) {
  value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name);
}

class GroupContainers : public ::testing::Test {
 protected:
  ~GroupContainers() override { set("QUOLL_GROUP_CONTAINERS", nullptr); }
};

TEST_F(GroupContainers, TheFolderComesFromTheEnvironment) {
  struct Row {
    const char* chosen;
    const char* data;
    const char* home;
    std::optional<std::string> expected;
    const char* why;
  };
  const Row rows[] = {
      {"/c/", "/d", "/h", "/c", "chosen wins"},
      {"", "/d", "/h", std::nullopt, "chosen, and then only there"},
      {"relative", "/d", "/h", std::nullopt, "would be another folder for each program"},
      {nullptr, "/d", "/h", "/d/group-containers", "the data folder"},
      {nullptr, "", "/h", "/h/.local/share/group-containers", "an empty one counts as unset"},
      {nullptr, "relative", "/h", "/h/.local/share/group-containers", "a relative one as well"},
      {nullptr, nullptr, "/h/../g", "/g/.local/share/group-containers", "plain paths only"},
      {nullptr, nullptr, nullptr, std::nullopt, "no home"},
      {nullptr, nullptr, "", std::nullopt, "an empty home is none"},
  };
  const std::string home = std::getenv("HOME") != nullptr ? std::getenv("HOME") : "/";
  for (const Row& row : rows) {
    set("QUOLL_GROUP_CONTAINERS", row.chosen);
    set("XDG_DATA_HOME", row.data);
    set("HOME", row.home);
    EXPECT_EQ(posix::group_containers_folder(), row.expected) << row.why;
  }
  set("XDG_DATA_HOME", nullptr);
  set("HOME", home.c_str());
}

TEST_F(GroupContainers, ALocationIsTakenApart) {
  set("QUOLL_GROUP_CONTAINERS", "/c");
  struct Row {
    const char* path;
    const char* container;
    const char* inside;
    const char* why;
  };
  const Row rows[] = {
      {"/c/g", "/c/g", "", "the container itself"},
      {"/c/g/", "/c/g", "", "a slash at the end means nothing"},
      {"/c//g/./a/../b//c/", "/c/g", "/b/c", "normalised"},
      {"/x/../c/g/a", "/c/g", "/a", "normalised before it is compared"},
      {"/c", nullptr, "", "no container"},
      {"/c/g/..", nullptr, "", "no container either"},
      {"/c/g/../../d/a", nullptr, "", "leads out"},
      {"/cg/a", nullptr, "", "begins alike only"},
      {"c/g/a", nullptr, "", "not absolute"},
      {"", nullptr, "", "no path"},
  };
  for (const Row& row : rows) {
    const auto location = posix::locate_in_container(row.path);
    EXPECT_EQ(location.has_value(), row.container != nullptr) << row.why;
    if (location && row.container != nullptr) {
      EXPECT_EQ(location->container, row.container) << row.why;
      EXPECT_EQ(location->inside, row.inside) << row.why;
    }
  }
}

TEST_F(GroupContainers, IsPrivateToTheUserWithTheFoldersAboveIt) {
  const test::TemporaryFolder folder;
  set("QUOLL_GROUP_CONTAINERS", folder.path("a/b").c_str());
  ASSERT_TRUE(posix::make_file_manager()->containerURLForSecurityApplicationGroupIdentifier("g"));
  for (const char* made : {"a", "a/b", "a/b/g"}) {
    struct stat status {};
    ASSERT_EQ(::stat(folder.path(made).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U) << made;
  }
}

TEST_F(GroupContainers, IsNoneWhereAFileIsInTheWay) {
  const test::TemporaryFolder folder;
  folder.write("g", "");
  set("QUOLL_GROUP_CONTAINERS", folder.path().c_str());
  EXPECT_FALSE(posix::make_file_manager()->containerURLForSecurityApplicationGroupIdentifier("g"));
  set("QUOLL_GROUP_CONTAINERS", folder.path("g").c_str());
  EXPECT_FALSE(posix::make_file_manager()->containerURLForSecurityApplicationGroupIdentifier("h"));
}

}  // namespace
}  // namespace quoll
