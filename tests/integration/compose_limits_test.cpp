// How much the receiver shows, logs and takes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>

#include "apps/compose/compose_error.h"
#include "apps/compose/noted_sizes.h"
#include "apps/compose/small_file.h"
#include "apps/compose/staging_folder.h"
#include "apps/compose/taker.h"
#include "apps/compose/waiting_files.h"
#include "quoll/linux/posix/files.h"
#include "quoll/platform/desktop.h"
#include "tests/integration/receiver_home.h"
#include "tests/support/recorders.h"

namespace quoll::test {
namespace {

std::string shown(const ReceiverHome& home, const std::string& text) {
  EXPECT_EQ(home.compose({"quoll://compose?plainBody=" + foundation::percent_encode(text)}).status,
            0);
  return home.compose({"--show"}).output;
}

TEST(ComposeLimits, TwelveLinesOfATextAreShown) {
  const ReceiverHome home;
  std::string text;
  for (int line = 1; line <= 12; ++line) {
    text += "line" + std::to_string(line) + "\n";
  }
  const std::string whole = shown(home, text);
  EXPECT_NE(whole.find("  line12\n"), std::string::npos) << whole;
  EXPECT_EQ(whole.find("..."), std::string::npos) << whole;
  const std::string cut = shown(home, text + "line13\n");
  EXPECT_NE(cut.find("  line12\n  ...\n"), std::string::npos) << cut;
}

TEST(ComposeLimits, FourHundredBytesOfALineAreShown) {
  const ReceiverHome home;
  const std::string longest(400, 'x');
  EXPECT_NE(shown(home, longest).find("  " + longest + "\n"), std::string::npos);
  EXPECT_NE(shown(home, longest + "x").find("  " + longest + "...\n"), std::string::npos);
}

/// Takes drafts in this process, and notes what it logs.
class Taker {
 public:
  ReceiverHome home;
  std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();

 private:
  ScopedEnvironment environment_{home.bus.environment()};
  platform::ScopedDesktop desktop_{{.bundle = std::make_shared<FixedBundle>("it.vorlent.quoll2"),
                                    .files = posix::make_file_manager(),
                                    .log = log}};
};

// Others may read the log.
TEST(ComposeLimits, FilesThatAreLeftOutAreLoggedByTheirReasonsWithoutNames) {
  const auto lines_for = [](std::size_t files) {
    const Taker taker;
    std::vector<std::string> paths(files, "/home/a/secret");
    paths.insert(paths.begin(), taker.home.staging() + "/secret");
    static_cast<void>(compose::take({ReceiverHome::url(paths)}));
    return taker.log->lines();
  };
  const std::string missing = "left out 1: No such file or directory";
  using Lines = std::vector<std::string>;
  EXPECT_EQ(lines_for(3), (Lines{missing, "left out 3: it is outside the shared folder"}));
  EXPECT_EQ(lines_for(2000),
            (Lines{missing, "left out 99: it is outside the shared folder", "left out 1901 more"}));
}

TEST(ComposeLimits, OneHundredFilesThatAreLeftOutAreKeptByName) {
  const Taker taker;
  const auto drafts =
      compose::take({ReceiverHome::url(std::vector<std::string>(250, "/etc/hostname"))});
  const auto left_out = drafts.front().left_out();
  EXPECT_EQ(left_out.named.size(), 100U);
  EXPECT_EQ(left_out.more, 150U);
  EXPECT_TRUE(compose::report_of(drafts).ends_with("\n150 more: they are not named here"));
}

TEST(ComposeLimits, ADraftHasTenThousandFiles) {
  const Taker taker;
  std::vector<std::string> paths;
  for (int number = 0; number < 10'002; ++number) {
    paths.push_back(taker.home.stage(std::to_string(number), "x"));
  }
  const auto drafts = compose::take({ReceiverHome::url(paths)});
  EXPECT_EQ(compose::waiting_files(drafts.front().folder()).size(), 10'000U);
  const auto left_out = drafts.front().left_out();
  ASSERT_EQ(left_out.count(), 2U);
  EXPECT_EQ(left_out.named.front().reason, "a draft has at most 10000 files");
}

TEST(ComposeLimits, ACallHas256Drafts) {
  const Taker taker;
  EXPECT_EQ(compose::take(std::vector<std::string>(256, "quoll://compose?")).size(), 256U);
  EXPECT_THROW(static_cast<void>(compose::take(std::vector<std::string>(257, "quoll://compose?"))),
               compose::ComposeError);
}

TEST(ComposeLimits, TheSizesOfAFileAreThoseOfTheMomentWhenItWasTaken) {
  const Taker taker;
  const std::string path = taker.home.stage("a", "12345");
  const auto drafts = compose::take({ReceiverHome::url({path}, "")});
  std::ofstream(path, std::ios::app) << "more";
  const auto sizes = compose::noted_sizes(drafts.front().folder());
  EXPECT_EQ(sizes.files, std::vector<std::uint64_t>{5});
  EXPECT_GT(sizes.message, 4096U);
  EXPECT_EQ(compose::waiting_files(drafts.front().folder()).front().size, 5U);
}

TEST(ComposeLimits, ASmallFileIsThereAsItWasOrAsItShallBe) {
  const TemporaryFolder folder;
  folder.write("note", "before");
  const posix::UniqueFd open(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit less{3, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &less);
  EXPECT_EQ(compose::write_small_file(open.get(), "note", "afterwards"), EFBIG);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(read_file(folder.path("note")), "before");
  EXPECT_FALSE(std::filesystem::exists(folder.path(".note")));
  EXPECT_EQ(compose::write_small_file(open.get(), "note", "afterwards"), 0);
  EXPECT_EQ(read_file(folder.path("note")), "afterwards");
}

TEST(StagingFolder, WhyItCannotBeOpenedIsSaid) {
  const ReceiverHome home;
  const std::string path = home.stage("a", "x");
  const ScopedEnvironment environment(home.bus.environment());
  const platform::ScopedDesktop desktop({.files = posix::make_file_manager()});
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const int next = dup(STDERR_FILENO);
  close(next);
  const rlimit none{static_cast<rlim_t>(next), before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  const compose::StagingFolder without;
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(without.open(path).reason, "the shared folder cannot be opened: Too many open files");
  EXPECT_EQ(compose::StagingFolder().open(path).reason, "");
  std::filesystem::remove_all(home.bus.path("containers"));
  std::ofstream(home.bus.path("containers")) << "no folder";
  EXPECT_EQ(compose::StagingFolder().open(path).reason, "the shared folder is not there");
}

TEST(ComposeLimits, ASubjectIsLookedForInTheFirst64KiB) {
  const ReceiverHome home;
  const auto listed = [&](std::size_t before) {
    std::filesystem::create_directories(home.drafts_folder());
    std::ofstream(home.drafts_folder() + "/20200101-000000.eml")
        << "X-Long: " << std::string(before - 9, 'x') << "\nSubject: found\n\n";
    return home.compose({"--list"}).output.find("found") != std::string::npos;
  };
  EXPECT_TRUE(listed(65536 - 20));
  EXPECT_FALSE(listed(65536));
}

}  // namespace
}  // namespace quoll::test
