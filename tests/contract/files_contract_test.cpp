#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>

#include "quoll/foundation/path.h"
#include "quoll/linux/posix/files.h"
#include "tests/support/memory_files.h"
#include "tests/support/temporary_folder.h"

namespace quoll {
namespace {

using foundation::Bytes;
using foundation::Error;
using foundation::NSURL;

/// A file manager, and a folder in which the test may work.
struct InMemory {
  std::shared_ptr<platform::NSFileManager> files = std::make_shared<test::MemoryFiles>();
  std::string folder = "/home";
};

struct OnDisk {
  OnDisk() { ::setenv("QUOLL_GROUP_CONTAINERS", (folder + "/containers").c_str(), 1); }
  ~OnDisk() { ::unsetenv("QUOLL_GROUP_CONTAINERS"); }
  test::TemporaryFolder temporary;
  std::shared_ptr<platform::NSFileManager> files = posix::make_file_manager();
  std::string folder = temporary.path();
};

template <typename World>
class FilesContract : public ::testing::Test {
 protected:
  [[nodiscard]] std::string path(const std::string& name) const {
    return world_.folder + "/" + name;
  }
  [[nodiscard]] std::shared_ptr<NSURL> url(const std::string& name) const {
    return NSURL::file_url(path(name), false);
  }
  platform::NSFileManager& files() { return *world_.files; }

  void write(const std::string& name, std::string_view text) {
    ASSERT_FALSE(files().writeToFile(Bytes(text.begin(), text.end()), path(name),
                                     platform::NSDataWritingAtomic));
  }
  void make_folder(const std::string& name) {
    ASSERT_FALSE(files().createDirectoryAtURL(url(name)));
  }
  std::string text(const std::string& name) {
    const auto contents = files().contentsAtPath(path(name));
    const auto* const bytes = std::get_if<Bytes>(&contents);
    return bytes != nullptr ? std::string(bytes->begin(), bytes->end()) : "(none)";
  }
  int code_of_reading(const std::string& name) {
    const auto contents = files().contentsAtPath(path(name));
    const auto* const error = std::get_if<Error>(&contents);
    return error != nullptr ? error->code : 0;
  }
  std::vector<std::string> names(const std::string& name) {
    auto names =
        files().contentsOfDirectoryAtPath(path(name)).value_or(std::vector<std::string>{"(none)"});
    std::sort(names.begin(), names.end());
    return names;
  }

  World world_;
};

/// The code of what an operation answered; 0 for success.
int code_of(const std::optional<Error>& error) {
  return error ? error->code : 0;
}

constexpr platform::NSDataWritingOptions kWays[] = {{}, platform::NSDataWritingAtomic};

using Worlds = ::testing::Types<InMemory, OnDisk>;
TYPED_TEST_SUITE(FilesContract, Worlds);

TYPED_TEST(FilesContract, WhatIsWrittenIsRead) {
  for (const auto options : kWays) {
    EXPECT_FALSE(this->files().writeToFile({'a', 0, 0xff}, this->path("x"), options));
    EXPECT_EQ(this->text("x"), (std::string{'a', 0, '\xff'}));
    EXPECT_FALSE(this->files().writeToFile({}, this->path("x"), options));
    EXPECT_EQ(this->text("x"), "");
  }
}

TYPED_TEST(FilesContract, ExistenceTellsFoldersFromFiles) {
  this->write("file", "");
  this->make_folder("folder");
  EXPECT_TRUE(this->files().fileExistsAtPath(this->path("file")));
  EXPECT_FALSE(this->files().isDirectoryAtPath(this->path("file")));
  EXPECT_TRUE(this->files().fileExistsAtPath(this->path("folder")));
  EXPECT_TRUE(this->files().isDirectoryAtPath(this->path("folder")));
  EXPECT_TRUE(this->files().fileExistsAtPath(this->path("folder/")));
  EXPECT_TRUE(this->files().isDirectoryAtPath(this->path("folder/")));
  EXPECT_FALSE(this->files().fileExistsAtPath(this->path("nothing")));
  EXPECT_FALSE(this->files().isDirectoryAtPath(this->path("nothing")));
  EXPECT_FALSE(this->files().fileExistsAtPath(""));
  EXPECT_FALSE(this->files().isDirectoryAtPath(""));
  EXPECT_FALSE(this->files().fileExistsAtPath(this->path("file") + std::string("\0x", 2)))
      << "a zero byte is not the end of the name";
}

TYPED_TEST(FilesContract, FoldersAreMadeWithThoseAboveThem) {
  this->make_folder("a/b/c");
  this->make_folder("a/b/c");  // an existing one is a success
  EXPECT_EQ(this->names("a/b"), std::vector<std::string>{"c"});
  this->write("file", "");
  EXPECT_EQ(code_of(this->files().createDirectoryAtURL(this->url("file"))),
            foundation::NSFileWriteFileExistsError);
  EXPECT_EQ(code_of(this->files().createDirectoryAtURL(nullptr)),
            foundation::NSFileNoSuchFileError);
}

TYPED_TEST(FilesContract, ListsTheNamesInAFolderOnly) {
  EXPECT_EQ(this->files().contentsOfDirectoryAtPath(this->path("nothing")), std::nullopt);
  this->write("file", "");
  EXPECT_EQ(this->files().contentsOfDirectoryAtPath(this->path("file")), std::nullopt);
  this->make_folder("f/inner");
  this->write("f/.hidden", "");
  EXPECT_EQ(this->names("f"), (std::vector<std::string>{".hidden", "inner"}));
}

TYPED_TEST(FilesContract, CopiesFilesAndWholeFolders) {
  this->write("x", "one");
  EXPECT_FALSE(this->files().copyItemAtPath(this->path("x"), this->path("y")));
  EXPECT_EQ(this->text("x"), "one");
  EXPECT_EQ(this->text("y"), "one");
  this->make_folder("f/deep/empty");
  this->write("f/deep/z", "two");
  EXPECT_FALSE(this->files().copyItemAtPath(this->path("f"), this->path("g")));
  EXPECT_EQ(this->names("g/deep"), (std::vector<std::string>{"empty", "z"}));
  EXPECT_EQ(this->text("g/deep/z"), "two");
}

TYPED_TEST(FilesContract, CopyingRefuses) {
  this->write("x", "one");
  this->write("taken", "two");
  this->make_folder("f/inside");
  struct Row {
    std::string source;
    std::string destination;
    int code;
    const char* why;
  };
  using namespace foundation;
  const Row rows[] = {
      {"nothing", "y", NSFileReadNoSuchFileError, "no source"},
      {"x/y", "y", NSFileReadNoSuchFileError, "a file is no folder"},
      {std::string("x\0y", 3), "y", NSFileReadNoSuchFileError, "no name has a zero byte"},
      {"x", "taken", NSFileWriteFileExistsError, "a file is never replaced"},
      {"x", "f", NSFileWriteFileExistsError, "a folder is no place to copy into"},
      {"f", "taken", NSFileWriteFileExistsError, "a folder does not replace either"},
      {"x", "nothing/y", NSFileNoSuchFileError, "no folder to copy to"},
      {"x", std::string(256, 'n'), NSFileWriteUnknownError, "a name that is too long"},
  };
  for (const Row& row : rows) {
    const std::string source = this->path(row.source);
    const std::string destination = this->path(row.destination);
    const auto error = this->files().copyItemAtPath(source, destination);
    ASSERT_TRUE(error) << row.why;
    EXPECT_EQ(error->code, row.code) << row.why;
    const bool unreadable = row.code == NSFileReadNoSuchFileError;
    const std::string& at_fault = unreadable ? source : destination;
    const std::string& other = unreadable ? destination : source;
    EXPECT_EQ(*error->detail("NSFilePath"), at_fault) << row.why;
    EXPECT_EQ(*error->detail(unreadable ? "NSDestinationFilePath" : "NSSourceFilePathErrorKey"),
              other)
        << row.why;
    EXPECT_NE(error->text.find("“" + std::string(last_path_component(at_fault)) + "”"),
              std::string::npos)
        << error->text;
  }
  for (const char* inside : {"f/g", "f/inside/g"}) {
    EXPECT_TRUE(this->files().copyItemAtPath(this->path("f"), this->path(inside)))
        << "a folder into itself";
  }
  EXPECT_EQ(this->text("taken"), "two");
  EXPECT_EQ(this->names("f"), std::vector<std::string>{"inside"});
  EXPECT_TRUE(this->names("f/inside").empty());
  EXPECT_FALSE(this->files().fileExistsAtPath(this->path("y"))) << "nothing is left under the name";
}

TYPED_TEST(FilesContract, RemovesFilesAndWholeFolders) {
  this->write("x", "");
  this->make_folder("f/g");
  this->make_folder("fg");
  this->write("f/g/y", "");
  EXPECT_FALSE(this->files().removeItemAtURL(this->url("x")));
  EXPECT_FALSE(this->files().removeItemAtURL(this->url("f")));
  EXPECT_FALSE(this->files().fileExistsAtPath(this->path("f/g/y")));
  EXPECT_TRUE(this->files().fileExistsAtPath(this->path("fg"))) << "another that begins alike";
  const auto error = this->files().removeItemAtURL(this->url("f"));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code, foundation::NSFileNoSuchFileError);
  EXPECT_EQ(*error->detail("NSFilePath"), this->path("f"));
  EXPECT_EQ(code_of(this->files().removeItemAtURL(nullptr)), foundation::NSFileNoSuchFileError);
}

TYPED_TEST(FilesContract, OnlyFileUrlsNameFiles) {
  this->write("x", "");
  const auto web = NSURL::URLWithString("http://host" + this->path("x"));
  EXPECT_EQ(code_of(this->files().removeItemAtURL(web)), foundation::NSFileNoSuchFileError);
  EXPECT_EQ(code_of(this->files().createDirectoryAtURL(web)), foundation::NSFileNoSuchFileError);
  EXPECT_EQ(this->text("x"), "");
}

TYPED_TEST(FilesContract, ReadingAndWritingFail) {
  using namespace foundation;
  EXPECT_EQ(this->code_of_reading("nothing"), NSFileReadNoSuchFileError);
  this->make_folder("f");
  EXPECT_NE(this->code_of_reading("f"), 0) << "a folder has no bytes";
  for (const auto options : kWays) {
    EXPECT_EQ(code_of(this->files().writeToFile({'a'}, this->path("nothing/x"), options)),
              NSFileNoSuchFileError);
    EXPECT_TRUE(this->files().writeToFile({'a'}, this->path("f"), options));
    EXPECT_TRUE(this->files().writeToFile({'a'}, "", options));
    EXPECT_TRUE(this->files().writeToFile({'a'}, this->path(std::string(256, 'n')), options));
  }
  EXPECT_TRUE(this->names("f").empty());
}

TYPED_TEST(FilesContract, TheContainerIsMadeAndStays) {
  const auto container =
      this->files().containerURLForSecurityApplicationGroupIdentifier("G1.example");
  ASSERT_TRUE(container);
  EXPECT_TRUE(container->absoluteString().ends_with("/G1.example/"));
  EXPECT_TRUE(this->files().isDirectoryAtPath(*foundation::file_system_path(container)));
  EXPECT_TRUE(this->files()
                  .containerURLForSecurityApplicationGroupIdentifier("G1.example")
                  ->isEqual(container.get()));
  for (const std::string& group :
       {std::string(), std::string("."), std::string(".."), std::string("a/b"),
        std::string("a\0b", 3), std::string(256, 'g')}) {
    EXPECT_FALSE(this->files().containerURLForSecurityApplicationGroupIdentifier(group)) << group;
  }
}

}  // namespace
}  // namespace quoll
