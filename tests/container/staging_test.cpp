#include "quoll/container/staging.h"

#include <fstream>
#include <stdexcept>

#include "quoll/container/group_container.h"
#include "tests/container/container_test.h"
#include "tests/container/redirecting_coordinator.h"

namespace quoll {
namespace {

using ExtensionUtilities::ShareDatas;
using ExtensionUtilities::ShareFiles;
using ExtensionUtilities::ShareInit;
using foundation::Bytes;
using foundation::Error;
using foundation::Value;
using test::FailingFiles;

const Error kGone{"D", 1, "gone", {}};
const Error kFull{"D", 2, "full", {}};
constexpr const char* kGoneText = "Error Domain=D Code=1 \"gone\"";
constexpr const char* kFullText = "Error Domain=D Code=2 \"full\"";

using Staging = test::ContainerTest;

TEST_F(Staging, InitLogsTheRemovalsErrorTwiceWhenTheCreationSucceeds) {
  files->fail(FailingFiles::Operation::kRemove, 1, kGone);
  ShareInit("Share");
  EXPECT_EQ(log->lines(), (std::vector<std::string>{std::string("shareInit delete ") + kGoneText,
                                                    std::string("shareInit create ") + kGoneText}));
  for (const platform::LogEvent& event : log->events()) {
    ASSERT_TRUE(event.error) << event.text;
    EXPECT_EQ(event.error->code, foundation::kNotPreparedError) << event.text;
    ASSERT_NE(event.error->underlying(), nullptr) << event.text;
    EXPECT_EQ(event.error->underlying()->description(), kGoneText) << event.text;
  }
  EXPECT_TRUE(std::filesystem::is_directory(staging()));
}

TEST_F(Staging, InitLogsTheCreationsOwnError) {
  files->fail(FailingFiles::Operation::kRemove, 1, kGone);
  files->fail(FailingFiles::Operation::kCreateDirectory, 1, kFull);
  ShareInit("Share");
  EXPECT_EQ(log->lines(), (std::vector<std::string>{std::string("shareInit delete ") + kGoneText,
                                                    std::string("shareInit create ") + kFullText}));
}

TEST_F(Staging, InitLogsACreationThatFailsAlone) {
  std::filesystem::create_directories(staging());
  files->fail(FailingFiles::Operation::kCreateDirectory, 1, kFull);
  ShareInit("Share");
  EXPECT_EQ(log->lines(), std::vector<std::string>{std::string("shareInit create ") + kFullText});
}

/// Each line that it gets puts one more path into the list.
class GrowingLog final : public platform::Log {
 public:
  explicit GrowingLog(foundation::List list) : list_(std::move(list)) {}
  void write(const platform::LogEvent& /*event*/) override { list_.addObject("/missing"); }

 private:
  foundation::List list_;
};

TEST_F(Staging, StagesWhatIsInTheListWhenItBegins) {
  const auto paths = list({"/missing/a", "/missing/b"});
  const platform::ScopedDesktop growing(
      platform::Desktop{.files = files,
                        .coordinator = posix::coordinator_factory(),
                        .log = std::make_shared<GrowingLog>(paths)});
  EXPECT_TRUE(ShareFiles("Share", paths).empty());
  EXPECT_EQ(paths.count(), 4U) << "one line for each of the two";
}

TEST_F(Staging, InitIsSilentAndEmptiesTheFolder) {
  std::filesystem::create_directories(staging() + "/deep/er");
  std::ofstream(staging() + "/deep/er/file") << "x";
  std::filesystem::create_directories(folder.path("K7Q2M9XT4B.quoll/SharedData/Other"));
  ShareInit("Share");
  EXPECT_TRUE(log->lines().empty());
  EXPECT_TRUE(std::filesystem::is_empty(staging()));
  EXPECT_TRUE(std::filesystem::exists(folder.path("K7Q2M9XT4B.quoll/SharedData/Other")))
      << "other services keep their folders";
}

TEST_F(Staging, WithoutAContainerEachOperationLogsItsOwnLineOnce) {
  const platform::ScopedDesktop bare({.log = log});
  ShareInit("Share");
  EXPECT_TRUE(ShareFiles("Share", list({"/a"})).empty());
  EXPECT_TRUE(ShareDatas("Share", list({Bytes{1}})).empty());
  const auto lines = log->lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_TRUE(lines[0].starts_with("shareInit Error Domain="));
  EXPECT_TRUE(lines[1].starts_with("Error shareFiles Error Domain="));
  EXPECT_TRUE(lines[2].starts_with("Error shareDatas Error Domain="));
  for (const platform::LogEvent& event : log->events()) {
    ASSERT_TRUE(event.error) << event.text;
    EXPECT_EQ(event.error->domain, foundation::kQuollErrorDomain);
    EXPECT_EQ(event.error->code, foundation::kNotCoordinatedError);
    ASSERT_NE(event.error->underlying(), nullptr);
    EXPECT_TRUE(event.text.ends_with(event.error->underlying()->description())) << event.text;
  }
}

TEST_F(Staging, ARefusedNameIsInItsLine) {
  ShareInit("../Escape");
  EXPECT_TRUE(ShareFiles("a/b", list({"/a"})).empty());
  EXPECT_TRUE(ShareDatas("..", list({Bytes{1}})).empty());
  const auto lines = log->lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_TRUE(
      lines[0].starts_with("shareInit Error Domain=NSCocoaErrorDomain Code=512 "
                           "\"“../Escape” is not the name of one folder.\""))
      << lines[0];
  EXPECT_TRUE(lines[1].starts_with("Error shareFiles Error Domain=")) << lines[1];
  EXPECT_NE(lines[1].find("“a/b”"), std::string::npos) << lines[1];
  EXPECT_TRUE(lines[2].starts_with("Error shareDatas Error Domain=")) << lines[2];
  EXPECT_NE(lines[2].find("“..”"), std::string::npos) << lines[2];
}

TEST_F(Staging, FilesOfOneNameGetTheNextFreeOnes) {
  ShareInit("Share");
  std::filesystem::create_directories(folder.path("a"));
  std::filesystem::create_directories(folder.path("b"));
  const auto staged = ShareFiles("Share", list({folder.write("a/report.pdf", "first"),
                                                folder.write("b/report.pdf", "second")}));
  EXPECT_EQ(texts(staged), (std::vector{staging() + "/report.pdf", staging() + "/report_1.pdf"}));
  EXPECT_EQ(test::read_file(staging() + "/report.pdf"), "first");
  EXPECT_EQ(test::read_file(staging() + "/report_1.pdf"), "second");
}

TEST_F(Staging, ImagesAreNumbered) {
  ShareInit("Share");
  const auto staged = ShareDatas("Share", list({Bytes{'1'}, Bytes{'2'}, Bytes{'3'}}));
  EXPECT_EQ(texts(staged), (std::vector{staging() + "/image.png", staging() + "/image_1.png",
                                        staging() + "/image_2.png"}));
  EXPECT_EQ(test::read_file(staging() + "/image_2.png"), "3");
}

TEST_F(Staging, AFailedItemIsLeftOutAndTheRestGoesOn) {
  ShareInit("Share");
  files->fail(FailingFiles::Operation::kCopy, 2, kGone);
  const auto staged = ShareFiles(
      "Share", list({folder.write("1", ""), folder.write("2", ""), folder.write("3", "")}));
  EXPECT_EQ(texts(staged), (std::vector{staging() + "/1", staging() + "/3"}));
  EXPECT_EQ(log->lines().back(), std::string("Error writing file shareFiles ") + kGoneText);

  files->fail(FailingFiles::Operation::kWrite, 1, kFull);
  EXPECT_EQ(texts(ShareDatas("Share", list({Bytes{1}, Bytes{2}}))),
            std::vector{staging() + "/image.png"})
      << "the name that was not written is given again";
  EXPECT_EQ(log->lines().back(), std::string("Error writing file shareDatas ") + kFullText);
}

TEST_F(Staging, ANameHas255BytesAndASecondOfThemNoRoomForItsNumber) {
  ShareInit("Share");
  const std::string name(255, 'n');
  const std::string path = folder.write(name, "content");
  EXPECT_EQ(texts(ShareFiles("Share", list({path, path}))), std::vector{staging() + "/" + name});
  EXPECT_TRUE(log->lines().back().starts_with("Error writing file shareFiles "))
      << log->lines().back();
}

TEST_F(Staging, AnExceptionEndsTheLoopAndKeepsWhatIsThere) {
  ShareInit("Share");
  const std::string path = folder.write("1", "");
  EXPECT_EQ(texts(ShareFiles("Share", list({path, 7, path}))), std::vector{staging() + "/1"});
  EXPECT_TRUE(log->lines().back().starts_with("Exception shareFiles ")) << log->lines().back();
  EXPECT_EQ(texts(ShareDatas("Share", list({Bytes{1}, "text", Bytes{2}}))),
            std::vector{staging() + "/image.png"});
  EXPECT_TRUE(log->lines().back().starts_with("Exception shareDatas ")) << log->lines().back();
  const auto raised = log->events().back();
  ASSERT_TRUE(raised.error);
  EXPECT_EQ(raised.error->code, foundation::kRaisedError);
  EXPECT_EQ(raised.text, "Exception shareDatas " + raised.error->text);
}

TEST_F(Staging, AnotherExceptionPassesAndFreesTheLock) {
  class Throwing final : public platform::ForwardingFiles {
   public:
    using ForwardingFiles::ForwardingFiles;
    std::optional<Error> copyItemAtPath(std::string_view /*source*/,
                                        std::string_view /*destination*/) override {
      throw std::runtime_error("not the platform's");
    }
  };
  ShareInit("Share");
  const std::string path = folder.write("1", "");
  {
    const platform::ScopedDesktop throwing({.files = std::make_shared<Throwing>(files),
                                            .coordinator = posix::coordinator_factory(),
                                            .log = log});
    EXPECT_THROW(static_cast<void>(ShareFiles("Share", list({path}))), std::runtime_error);
  }
  EXPECT_EQ(ShareFiles("Share", list({path})).count(), 1U) << "the lock was released";
}

TEST_F(Staging, ExcludesEveryoneFromTheFolderAndWritesImagesInOneStep) {
  struct Access {
    std::string path;
    platform::NSFileCoordinatorWritingOptions options;
    bool operator==(const Access&) const = default;
  };
  class Recording final : public platform::NSFileCoordinator {
   public:
    explicit Recording(std::vector<Access>& seen) : seen_(seen) {}
    std::optional<Error> coordinateWritingItemAtURL(
        const std::shared_ptr<foundation::NSURL>& url,
        platform::NSFileCoordinatorWritingOptions options,
        const std::function<void(const std::shared_ptr<foundation::NSURL>&)>& accessor) override {
      seen_.push_back({*url->path(), options});
      accessor(url);
      return std::nullopt;
    }

   private:
    std::vector<Access>& seen_;
  };
  std::vector<Access> seen;
  const platform::ScopedDesktop recorded(
      {.files = files, .coordinator = [&] { return std::make_unique<Recording>(seen); }});
  ShareInit("Share");
  static_cast<void>(ShareFiles("Share", list({folder.write("1", "")})));
  static_cast<void>(ShareDatas("Share", list({Bytes{1}})));
  const Access access{staging(), platform::NSFileCoordinatorWritingForDeleting};
  EXPECT_EQ(seen, (std::vector<Access>{access, access, access}));
  EXPECT_EQ(files->write_options, platform::NSDataWritingAtomic);
}

TEST_F(Staging, WorksAtTheLocationThatIsGiven) {
  const auto script = std::make_shared<test::Redirecting::Script>();
  script->path = folder.path("elsewhere");
  const platform::ScopedDesktop other(test::redirected(*platform::current_desktop(), script));
  std::filesystem::create_directories(staging());
  folder.write("K7Q2M9XT4B.quoll/SharedData/Share/1", "of an earlier share");
  folder.write("K7Q2M9XT4B.quoll/SharedData/Share/image.png", "of an earlier share");
  std::filesystem::create_directories(script->path);
  folder.write("elsewhere/old", "");
  ShareInit("Share");
  EXPECT_TRUE(std::filesystem::is_empty(script->path));
  EXPECT_EQ(texts(ShareFiles("Share", list({folder.write("1", "new")}))),
            std::vector{script->path + "/1"});
  EXPECT_EQ(texts(ShareDatas("Share", list({Bytes{'p'}}))),
            std::vector{script->path + "/image.png"});
  EXPECT_EQ(test::read_file(script->path + "/1"), "new");
  EXPECT_EQ(test::read_file(script->path + "/image.png"), "p");
  EXPECT_EQ(script->asked, staging());
  EXPECT_EQ(test::read_file(staging() + "/1"), "of an earlier share");
  EXPECT_EQ(test::read_file(staging() + "/image.png"), "of an earlier share");
}

TEST_F(Staging, EachServiceHasAFolderOfItsOwn) {
  ShareInit("Share");
  ShareInit("Other");
  const std::string path = folder.write("1", "");
  const std::string other = folder.path("K7Q2M9XT4B.quoll/SharedData/Other");
  EXPECT_EQ(texts(ShareFiles("Other", list({path}))), std::vector{other + "/1"});
  EXPECT_EQ(texts(ShareDatas("Other", list({Bytes{1}}))), std::vector{other + "/image.png"});
  ShareInit("Share");
  EXPECT_TRUE(std::filesystem::exists(other + "/1"));
  ShareInit("Other");
  EXPECT_TRUE(std::filesystem::is_empty(other));
}

TEST_F(Staging, EmptyAndNullListsWriteNothing) {
  ShareInit("Share");
  EXPECT_TRUE(ShareFiles("Share", list({})).empty());
  EXPECT_TRUE(ShareFiles("Share", nullptr).empty());
  EXPECT_TRUE(ShareDatas("Share", nullptr).empty());
  EXPECT_TRUE(std::filesystem::is_empty(staging()));
}

TEST_F(Staging, AMissingFolderFailsItemByItem) {
  const std::string path = folder.write("1", "");
  EXPECT_TRUE(ShareFiles("Share", list({path, path})).empty());
  ASSERT_EQ(log->lines().size(), 2U);
  EXPECT_TRUE(log->lines()[1].starts_with("Error writing file shareFiles Error Domain="));
  EXPECT_FALSE(std::filesystem::exists(staging())) << "staging makes no folder";
}

TEST_F(Staging, ANameThatIsNoTextIsStagedWithItsBadBytesEscaped) {
  ShareInit("Share");
  const std::string path = folder.write("caf\xE9.txt", "content");
  EXPECT_EQ(texts(ShareFiles("Share", list({path}))), std::vector{staging() + "/caf%E9.txt"});
  EXPECT_EQ(test::read_file(staging() + "/caf%E9.txt"), "content");
}

TEST_F(Staging, AThousandFilesOfOneNameLookAtTheFolderOnce) {
  ShareInit("Share");
  const std::string path = folder.write("same.txt", "x");
  const auto staged = ShareFiles("Share", list(std::vector<Value>(1000, path)));
  ASSERT_EQ(staged.count(), 1000U);
  EXPECT_EQ(staged.objectAtIndex(0), staging() + "/same.txt");
  EXPECT_EQ(staged.objectAtIndex(999), staging() + "/same_999.txt");
  EXPECT_EQ(files->calls(FailingFiles::Operation::kList), 1);
}

}  // namespace
}  // namespace quoll
