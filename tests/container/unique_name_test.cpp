#include "quoll/container/unique_name.h"

#include <fstream>

#include "tests/container/container_test.h"

namespace quoll {
namespace {

using container::UniqueNames;
using Vorlent_Fs::GetGoodPath;

class UniqueName : public test::ContainerTest {
 protected:
  void take(const std::string& name) const { folder.write(name, ""); }
};

TEST_F(UniqueName, NumbersTheBaseNotTheCandidate) {
  struct Case {
    const char* reason;
    const char* name;
    std::vector<const char*> expected;
  };
  const Case cases[] = {
      {"an extension", "photo.jpg", {"photo.jpg", "photo_1.jpg", "photo_2.jpg", "photo_3.jpg"}},
      {"none", "README", {"README", "README_1", "README_2"}},
      {"the last extension only", "a.tar.gz", {"a.tar.gz", "a.tar_1.gz", "a.tar_2.gz"}},
      {"a hidden name has none", ".bashrc", {".bashrc", ".bashrc_1"}},
      {"a dot at the end is no extension", "a.", {"a.", "a._1"}},
      {"two dots", "scratch..tiff", {"scratch..tiff", "scratch._1.tiff"}},
      {"a name that looks numbered", "a_1.txt", {"a_1.txt", "a_1_1.txt"}},
  };
  for (const Case& row : cases) {
    UniqueNames names(folder.path());
    for (const char* expected : row.expected) {
      EXPECT_EQ(GetGoodPath(row.name, folder.path()), folder.path(expected)) << row.reason;
      EXPECT_EQ(names.good_path(row.name), folder.path(expected)) << row.reason;
      take(expected);
    }
  }
}

TEST_F(UniqueName, FillsTheFirstHole) {
  for (const char* name : {"a.txt", "a_1.txt", "a_3.txt"}) {
    take(name);
  }
  EXPECT_EQ(GetGoodPath("a.txt", folder.path()), folder.path("a_2.txt"));
  UniqueNames names(folder.path());
  EXPECT_EQ(names.good_path("a.txt"), folder.path("a_2.txt"));
  take("a_2.txt");
  EXPECT_EQ(names.good_path("a.txt"), folder.path("a_4.txt"));
}

TEST_F(UniqueName, GivesANameAgainThatWasNotWritten) {
  UniqueNames names(folder.path());
  take("a.txt");
  EXPECT_EQ(names.good_path("a.txt"), folder.path("a_1.txt"));
  EXPECT_EQ(names.good_path("a.txt"), folder.path("a_1.txt"));
}

TEST_F(UniqueName, SeesWhatAnotherNameTook) {
  UniqueNames names(folder.path());
  take("a.txt");
  EXPECT_EQ(names.good_path("a.txt"), folder.path("a_1.txt"));
  take("a_1.txt");
  EXPECT_EQ(names.good_path("a_1.txt"), folder.path("a_1_1.txt"));
  EXPECT_EQ(names.good_path("a.txt"), folder.path("a_2.txt"));
}

TEST_F(UniqueName, AFolderTakesANameToo) {
  std::filesystem::create_directory(folder.path("a.txt"));
  EXPECT_EQ(GetGoodPath("a.txt", folder.path()), folder.path("a_1.txt"));
}

TEST_F(UniqueName, ALinkThatLeadsNowhereTakesNoName) {
  const auto link = [&](const char* name) {
    std::filesystem::create_symlink("nowhere", folder.path(name));
  };
  link("b.txt");
  EXPECT_EQ(GetGoodPath("b.txt", folder.path()), folder.path("b.txt"));
  EXPECT_EQ(UniqueNames(folder.path()).good_path("b.txt"), folder.path("b.txt"));
  take("a.txt");
  link("a_1.txt");
  EXPECT_EQ(GetGoodPath("a.txt", folder.path()), folder.path("a_1.txt"));
  EXPECT_EQ(UniqueNames(folder.path()).good_path("a.txt"), folder.path("a_1.txt"));
  std::filesystem::create_symlink("a.txt", folder.path("c.txt"));
  EXPECT_EQ(UniqueNames(folder.path()).good_path("c.txt"), folder.path("c_1.txt"))
      << "a link to a file takes its name";
}

TEST_F(UniqueName, WorksInAFolderThatCannotBeListed) {
  files->fail(test::FailingFiles::Operation::kList, 1, {});
  take("a.txt");
  take("a_1.txt");
  EXPECT_EQ(UniqueNames(folder.path()).good_path("a.txt"), folder.path("a_2.txt"));
}

}  // namespace
}  // namespace quoll
