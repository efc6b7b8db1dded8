#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>

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
    ASSERT_TRUE(files().writeToFile(Bytes(text.begin(), text.end()), path(name),
                                    platform::NSDataWritingAtomic, error_));
  }
  void make_folder(const std::string& name) {
    ASSERT_TRUE(files().createDirectoryAtURL(url(name), error_));
  }
  std::string text(const std::string& name) {
    const auto bytes = files().contentsAtPath(path(name), error_);
    return bytes ? std::string(bytes->begin(), bytes->end()) : "(none)";
  }
  [[nodiscard]] int code() const { return error_ ? error_->code : 0; }
  std::vector<std::string> names(const std::string& name) {
    auto names =
        files().contentsOfDirectoryAtPath(path(name)).value_or(std::vector<std::string>{"(none)"});
    std::sort(names.begin(), names.end());
    return names;
  }

  World world_;
  std::optional<Error> error_;
};

using Worlds = ::testing::Types<InMemory, OnDisk>;
TYPED_TEST_SUITE(FilesContract, Worlds);

TYPED_TEST(FilesContract, WhatIsWrittenIsRead) {
  for (const unsigned options : {0U, platform::NSDataWritingAtomic}) {
    EXPECT_TRUE(this->files().writeToFile({'a', 0, 0xff}, this->path("x"), options, this->error_));
    EXPECT_EQ(this->files().contentsAtPath(this->path("x"), this->error_), (Bytes{'a', 0, 0xff}));
    EXPECT_TRUE(this->files().writeToFile({}, this->path("x"), options, this->error_));
    EXPECT_EQ(this->files().contentsAtPath(this->path("x"), this->error_), Bytes());
  }
  EXPECT_FALSE(this->error_) << "success leaves the error alone";
}

TYPED_TEST(FilesContract, SuccessLeavesAnEarlierErrorAlone) {
  this->error_ = foundation::posix_error(EIO);
  this->write("x", "1");
  this->make_folder("f");
  EXPECT_TRUE(this->files().copyItemAtPath(this->path("x"), this->path("y"), this->error_));
  EXPECT_TRUE(this->files().removeItemAtURL(this->url("x"), this->error_));
  EXPECT_EQ(this->code(), EIO);
}

TYPED_TEST(FilesContract, ExistenceTellsFoldersFromFiles) {
  this->write("file", "");
  this->make_folder("folder");
  bool is_folder = true;
  EXPECT_TRUE(this->files().fileExistsAtPath(this->path("file"), &is_folder));
  EXPECT_FALSE(is_folder);
  EXPECT_TRUE(this->files().fileExistsAtPath(this->path("folder"), &is_folder));
  EXPECT_TRUE(is_folder);
  EXPECT_TRUE(this->files().fileExistsAtPath(this->path("folder/")));
  EXPECT_FALSE(this->files().fileExistsAtPath(this->path("nothing"), &is_folder));
  EXPECT_FALSE(is_folder);
  EXPECT_FALSE(this->files().fileExistsAtPath(""));
  EXPECT_FALSE(this->files().fileExistsAtPath(this->path("file") + std::string("\0x", 2)))
      << "a zero byte is not the end of the name";
}

TYPED_TEST(FilesContract, FoldersAreMadeWithThoseAboveThem) {
  this->make_folder("a/b/c");
  this->make_folder("a/b/c");  // an existing one is a success
  EXPECT_EQ(this->names("a/b"), std::vector<std::string>{"c"});
  EXPECT_FALSE(this->error_);
  this->write("file", "");
  EXPECT_FALSE(this->files().createDirectoryAtURL(this->url("file"), this->error_));
  EXPECT_EQ(this->code(), foundation::NSFileWriteFileExistsError);
  EXPECT_FALSE(this->files().createDirectoryAtURL(nullptr, this->error_));
  EXPECT_EQ(this->code(), foundation::NSFileNoSuchFileError);
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
  EXPECT_TRUE(this->files().copyItemAtPath(this->path("x"), this->path("y"), this->error_));
  EXPECT_EQ(this->text("x"), "one");
  EXPECT_EQ(this->text("y"), "one");
  this->make_folder("f/deep/empty");
  this->write("f/deep/z", "two");
  EXPECT_TRUE(this->files().copyItemAtPath(this->path("f"), this->path("g"), this->error_));
  EXPECT_EQ(this->names("g/deep"), (std::vector<std::string>{"empty", "z"}));
  EXPECT_EQ(this->text("g/deep/z"), "two");
  EXPECT_FALSE(this->error_);
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
    this->error_.reset();
    const std::string source = this->path(row.source);
    const std::string destination = this->path(row.destination);
    EXPECT_FALSE(this->files().copyItemAtPath(source, destination, this->error_)) << row.why;
    ASSERT_TRUE(this->error_) << row.why;
    EXPECT_EQ(this->code(), row.code) << row.why;
    EXPECT_EQ(*this->error_->detail("NSFilePath"), source) << row.why;
    EXPECT_EQ(*this->error_->detail("NSDestinationFilePath"), destination) << row.why;
  }
  for (const char* inside : {"f/g", "f/inside/g"}) {
    EXPECT_FALSE(this->files().copyItemAtPath(this->path("f"), this->path(inside), this->error_))
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
  EXPECT_TRUE(this->files().removeItemAtURL(this->url("x"), this->error_));
  EXPECT_TRUE(this->files().removeItemAtURL(this->url("f"), this->error_));
  EXPECT_FALSE(this->files().fileExistsAtPath(this->path("f/g/y")));
  EXPECT_TRUE(this->files().fileExistsAtPath(this->path("fg"))) << "another that begins alike";
  EXPECT_FALSE(this->files().removeItemAtURL(this->url("f"), this->error_));
  EXPECT_EQ(this->code(), foundation::NSFileNoSuchFileError);
  EXPECT_EQ(*this->error_->detail("NSFilePath"), this->path("f"));
  this->error_.reset();
  EXPECT_FALSE(this->files().removeItemAtURL(nullptr, this->error_));
  EXPECT_EQ(this->code(), foundation::NSFileNoSuchFileError);
}

TYPED_TEST(FilesContract, OnlyFileUrlsNameFiles) {
  this->write("x", "");
  const auto web = NSURL::URLWithString("http://host" + this->path("x"));
  EXPECT_FALSE(this->files().removeItemAtURL(web, this->error_));
  EXPECT_FALSE(this->files().createDirectoryAtURL(web, this->error_));
  EXPECT_EQ(this->text("x"), "");
}

TYPED_TEST(FilesContract, ReadingAndWritingFail) {
  using namespace foundation;
  EXPECT_EQ(this->text("nothing"), "(none)");
  EXPECT_EQ(this->code(), NSFileReadNoSuchFileError);
  this->make_folder("f");
  EXPECT_EQ(this->text("f"), "(none)") << "a folder has no bytes";
  for (const unsigned options : {0U, platform::NSDataWritingAtomic}) {
    EXPECT_FALSE(this->files().writeToFile({'a'}, this->path("nothing/x"), options, this->error_));
    EXPECT_EQ(this->code(), NSFileNoSuchFileError);
    EXPECT_FALSE(this->files().writeToFile({'a'}, this->path("f"), options, this->error_));
    EXPECT_FALSE(this->files().writeToFile({'a'}, "", options, this->error_));
    EXPECT_FALSE(
        this->files().writeToFile({'a'}, this->path(std::string(256, 'n')), options, this->error_));
  }
  EXPECT_TRUE(this->names("f").empty());
}

TYPED_TEST(FilesContract, TheContainerIsMadeAndStays) {
  const auto container =
      this->files().containerURLForSecurityApplicationGroupIdentifier("G1.example");
  ASSERT_TRUE(container);
  EXPECT_TRUE(container->absoluteString().ends_with("/G1.example/"));
  bool is_folder = false;
  EXPECT_TRUE(this->files().fileExistsAtPath(*container->file_system_path(), &is_folder));
  EXPECT_TRUE(is_folder);
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
