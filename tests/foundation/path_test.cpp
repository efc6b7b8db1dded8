#include "quoll/foundation/path.h"

#include <gtest/gtest.h>

namespace quoll::foundation {
namespace {

TEST(LastPathComponent, IsWhatFollowsTheLastSlash) {
  struct Case {
    std::string_view path;
    std::string_view expected;
  };
  constexpr Case kCases[] = {
      {"/tmp/a.txt", "a.txt"},
      {"/tmp/a.txt/", "a.txt"},
      {"/tmp/a.txt///", "a.txt"},
      {"/tmp/", "tmp"},
      {"/tmp", "tmp"},
      {"/", "/"},
      {"///", "/"},
      {"a", "a"},
      {"", ""},
      {"a/..", ".."},
  };
  for (const Case& row : kCases) {
    EXPECT_EQ(last_path_component(row.path), row.expected) << row.path;
  }
}

TEST(PathExtension, FollowsTheLastDot) {
  struct Case {
    const char* reason;
    std::string_view path;
    std::string_view extension;
    std::string_view without;
  };
  constexpr Case kCases[] = {
      {"plain", "photo.jpg", "jpg", "photo"},
      {"the last dot counts", "a.tar.gz", "gz", "a.tar"},
      {"none", "README", "", "README"},
      {"a name whose only dot is its first character", ".bashrc", "", ".bashrc"},
      {"a hidden name with an extension", ".a.tiff", "tiff", ".a"},
      {"nothing behind the dot", "a.", "", "a."},
      {"the folder itself", ".", "", "."},
      {"the folder above", "..", "", ".."},
      {"two dots", "scratch..tiff", "tiff", "scratch."},
      {"two dots in front", "..a", "a", "."},
      {"a dot in a folder's name is not looked at", "/a.b/c", "", "/a.b/c"},
      {"a path", "/tmp/scratch.tiff", "tiff", "/tmp/scratch"},
      {"trailing slashes are ignored", "/tmp/scratch.d/", "d", "/tmp/scratch"},
      {"trailing slashes go without an extension too", "/tmp/README/", "", "/tmp/README"},
      {"nothing", "", "", ""},
      {"the root", "/", "", "/"},
  };
  for (const Case& row : kCases) {
    EXPECT_EQ(path_extension(row.path), row.extension) << row.reason;
    EXPECT_EQ(deleting_path_extension(row.path), row.without) << row.reason;
  }
}

TEST(AppendingPathExtension, JoinsWithADot) {
  EXPECT_EQ(appending_path_extension("a", "txt"), "a.txt");
  EXPECT_EQ(appending_path_extension("a.tar", "gz"), "a.tar.gz");
  EXPECT_EQ(appending_path_extension("a", ""), "a") << "an empty extension changes nothing";
  EXPECT_EQ(appending_path_extension("", "txt"), "") << "an empty name stays empty";
}

TEST(AppendingPathComponent, JoinsWithOneSlash) {
  EXPECT_EQ(appending_path_component("/a", "b"), "/a/b");
  EXPECT_EQ(appending_path_component("/a/", "b"), "/a/b");
  EXPECT_EQ(appending_path_component("/a/", "/b"), "/a/b");
  EXPECT_EQ(appending_path_component("/", "b"), "/b");
  EXPECT_EQ(appending_path_component("", "b"), "b");
  EXPECT_EQ(appending_path_component("", "/b"), "/b");
  EXPECT_EQ(appending_path_component("/a", ""), "/a");
}

TEST(IsAbsolutePath, BeginsWithASlashOrATilde) {
  EXPECT_TRUE(is_absolute_path("/a"));
  EXPECT_TRUE(is_absolute_path("~/a"));
  EXPECT_FALSE(is_absolute_path("a/b"));
  EXPECT_FALSE(is_absolute_path(""));
}

}  // namespace
}  // namespace quoll::foundation
