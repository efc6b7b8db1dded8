// How long a draft stays that a mail client was given.
#include "apps/compose/given_drafts.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "quoll/linux/posix/files.h"
#include "quoll/platform/desktop.h"
#include "tests/integration/process.h"
#include "tests/support/temporary_folder.h"

namespace quoll::compose {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kDay = std::int64_t{24} * 60 * 60;

class GivenDraftsTest : public testing::Test {
 protected:
  GivenDraftsTest() { fs::create_directories(drafts_); }

  [[nodiscard]] std::string draft(const std::string& name) const {
    std::ofstream(drafts_ + "/" + name + ".eml") << "draft";
    return drafts_ + "/" + name + ".eml";
  }
  [[nodiscard]] TakenFile file(const std::string& name) const {
    return {.name = name, .path = folder_.write("taken", "content")};
  }
  [[nodiscard]] std::string given(const std::string& name) const {
    return folder_.path("quoll-compose/given/" + name);
  }
  /// So many days after now, in this start of the system or in a later one.
  static Moment in_days(double days, bool after_restart = false) {
    Moment moment = present_moment();
    const auto seconds = static_cast<std::int64_t>(days * static_cast<double>(kDay));
    moment.time += seconds;
    moment.since_boot += seconds;
    if (after_restart) {
      moment.boot = "another";
      moment.since_boot = 5;
    }
    return moment;
  }

  test::TemporaryFolder folder_;
  std::string drafts_ = folder_.path("quoll-compose/drafts");
  test::ScopedEnvironment environment_{{{"XDG_DATA_HOME", folder_.path()}}};
  platform::ScopedDesktop desktop_{{.files = posix::make_file_manager()}};
};

TEST_F(GivenDraftsTest, FilesLieUnderTheirNamesForTheUserAlone) {
  GivenDraft given_draft(draft("a"));
  for (const std::string name : {"x", "x", "it's, \"q\"\n#100%20;", "-x", "\xff"}) {
    const TakenFile taken = file(name);
    chmod(taken.path.c_str(), 0444);
    const std::string path = given_draft.add(taken, name);
    EXPECT_EQ(fs::path(path).filename().string(), name);
    EXPECT_EQ(test::read_file(path), "content");
    EXPECT_FALSE(fs::exists(taken.path));
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
  }
  EXPECT_EQ(fs::status(given("a")).permissions(), fs::perms::owner_all);
  for (const auto& entry : fs::recursive_directory_iterator(given("a"))) {
    EXPECT_EQ(entry.status().permissions() & (fs::perms::group_all | fs::perms::others_all),
              fs::perms::none)
        << entry.path();
  }
}

TEST_F(GivenDraftsTest, AreCleanedAfterSevenDaysAndNeverBefore) {
  struct Row {
    const char* reason;
    Moment now;
    bool is_cleaned;
  };
  Moment set_forward = in_days(0.1);
  set_forward.time += 400 * kDay;
  Moment set_back = in_days(8);
  set_back.time -= 400 * kDay;
  const Row rows[] = {
      {"now", in_days(0), false},
      {"after almost seven days", in_days(6.99), false},
      {"after seven days", in_days(7.01), true},
      {"after almost seven days and a restart", in_days(6.99, true), false},
      {"after seven days and a restart", in_days(7.01, true), true},
      {"the clock was set forward by a year", set_forward, false},
      {"the clock was set back by a year", set_back, true},
  };
  for (const Row& row : rows) {
    const std::string path = draft("a");
    GivenDraft given_draft(path);
    given_draft.add(file("x"), "x");
    given_draft.mark();
    clean_given_drafts(row.now);
    EXPECT_EQ(fs::exists(path), !row.is_cleaned) << row.reason;
    EXPECT_EQ(fs::exists(given("a/0/x")), !row.is_cleaned) << row.reason;
    EXPECT_EQ(fs::exists(given("a")), !row.is_cleaned) << row.reason;
    fs::remove_all(given("a"));
  }
}

TEST_F(GivenDraftsTest, AClockThatIsBehindMakesNothingOld) {
  const std::string path = draft("a");
  GivenDraft(path).mark();
  clean_given_drafts(in_days(-20000, true));  // 1970, until somebody tells it the time
  clean_given_drafts(in_days(1, true));
  EXPECT_TRUE(fs::exists(path));
  clean_given_drafts(in_days(8, true));
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(GivenDraftsTest, ADraftThatNoClientHasStaysForGood) {
  const std::string alone = draft("alone");
  const std::string failed = draft("failed");
  GivenDraft(failed).add(file("x"), "x");
  clean_given_drafts(in_days(4000, true));
  EXPECT_TRUE(fs::exists(alone));
  EXPECT_TRUE(fs::exists(failed));
  EXPECT_FALSE(fs::exists(given("failed"))) << "a second copy of what the draft holds";
}

TEST_F(GivenDraftsTest, ACopyElsewhereGoesWithItsDraft) {
  const GivenDraft given_draft(draft("a"));
  const std::string copy = given_draft.copy_to(folder_.path("home/snap/mail/common/q"));
  given_draft.mark();
  EXPECT_EQ(test::read_file(copy), "draft");
  EXPECT_EQ(fs::status(fs::path(copy).parent_path()).permissions(), fs::perms::owner_all);
  clean_given_drafts(in_days(6));
  EXPECT_TRUE(fs::exists(copy));
  clean_given_drafts(in_days(8));
  EXPECT_FALSE(fs::exists(copy));
  EXPECT_TRUE(fs::exists(folder_.path("home/snap/mail/common/q")));
}

TEST_F(GivenDraftsTest, WhatLiesAmongThemIsNoHarm) {
  const std::string path = draft("a");
  GivenDraft(path).mark();
  std::ofstream(given("a/given")) << std::string(100000, 'x');
  std::ofstream(given("file")) << "x";
  fs::create_symlink("/nonexistent", given("link"));
  clean_given_drafts(in_days(1));
  EXPECT_TRUE(fs::exists(path));
  clean_given_drafts(in_days(8));
  EXPECT_FALSE(fs::exists(path));
}

}  // namespace
}  // namespace quoll::compose
