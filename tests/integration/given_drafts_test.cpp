// How long a draft stays that a mail client was given.
#include "apps/compose/given_draft.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "apps/compose/folders.h"
#include "apps/compose/sweep.h"
#include "quoll/linux/posix/files.h"
#include "quoll/platform/desktop.h"
#include "tests/integration/process.h"
#include "tests/support/recorders.h"
#include "tests/support/temporary_folder.h"

namespace quoll::compose {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kDay = std::int64_t{24} * 60 * 60;

class GivenDraftsTest : public testing::Test {
 protected:
  GivenDraftsTest() { make_folders(); }

  [[nodiscard]] std::string draft(const std::string& name) const {
    std::ofstream(drafts_ + "/" + name + ".eml") << "draft";
    return drafts_ + "/" + name + ".eml";
  }
  /// The draft in the folder of what clients are given, as it was taken with these files.
  [[nodiscard]] GivenDraft give(const std::string& name,
                                const std::vector<std::string>& files = {}) const {
    const std::string folder = taken_folder() + "/" + name;
    fs::create_directories(folder);
    std::ofstream sizes(folder + "/sizes");
    sizes << "5000\n";
    for (std::size_t k = 0; k < files.size(); ++k) {
      const std::string place = folder + "/files/" + std::to_string(k);
      fs::create_directories(place);
      std::ofstream(place + "/" + files[k]) << "content";
      sizes << "7\n";
      chmod((place + "/" + files[k]).c_str(), 0444);
    }
    sizes.close();
    auto taken = TakenDraft::lock(name);
    return GivenDraft(taken.value());
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
  test::ScopedEnvironment environment_{
      {{"XDG_DATA_HOME", folder_.path()}, {"HOME", folder_.path("home")}}};
  std::string drafts_ = folder_.path("quoll-compose/drafts");
  platform::ScopedDesktop desktop_{{.files = posix::make_file_manager()}};
};

TEST_F(GivenDraftsTest, FilesGetTheNamesOfTheClientAndKeepTheirModes) {
  const std::vector<std::string> names{"x", "x", "it's, \"q\"\n#100%20;", "-x", "\xff"};
  const auto given_draft = give("20200101-000000", {"1", "2", "3", "4", "5"});
  given_draft.name_files(names);
  for (std::size_t k = 0; k < names.size(); ++k) {
    const std::string path = GivenDraft::file_path("20200101-000000", k, names[k]);
    EXPECT_TRUE(path.starts_with(given("20200101-000000/files/"))) << path;
    EXPECT_EQ(test::read_file(path), "content");
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0444U);
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
    const std::string path = draft("20200101-000000");
    give("20200101-000000", {"x"}).mark();
    sweep_given(row.now);
    EXPECT_EQ(fs::exists(path), !row.is_cleaned) << row.reason;
    EXPECT_EQ(fs::exists(given("20200101-000000/files/0/x")), !row.is_cleaned) << row.reason;
    EXPECT_EQ(fs::exists(given("20200101-000000")), !row.is_cleaned) << row.reason;
    fs::remove_all(given("20200101-000000"));
  }
}

TEST_F(GivenDraftsTest, AClockThatIsBehindMakesNothingOld) {
  const std::string path = draft("20200101-000000");
  give("20200101-000000").mark();
  sweep_given(in_days(-20000, true));  // 1970, until somebody tells it the time
  sweep_given(in_days(1, true));
  EXPECT_TRUE(fs::exists(path));
  sweep_given(in_days(8, true));
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(GivenDraftsTest, ADraftThatNoClientHasStaysForGood) {
  const std::string alone = draft("20200101-000001");
  const std::string failed = draft("20200101-000002");
  give("20200101-000002", {"x"}).take_back();
  sweep_given(in_days(4000, true));
  EXPECT_TRUE(fs::exists(alone));
  EXPECT_TRUE(fs::exists(failed));
  EXPECT_FALSE(fs::exists(given("20200101-000002"))) << "a second copy of what the draft holds";
}

TEST_F(GivenDraftsTest, WhatWasPerhapsGivenStaysSo) {
  const std::string path = draft("20200101-000000");
  const std::string copy = give("20200101-000000", {"x"}).copy_message_for("mail");
  sweep_given(in_days(6));
  EXPECT_TRUE(fs::exists(given("20200101-000000/files/0/x")));
  sweep_given(in_days(8));
  EXPECT_EQ(giving_of("20200101-000000"), Giving::kPerhaps);
  EXPECT_FALSE(fs::exists(given("20200101-000000/files")) || fs::exists(copy))
      << "the draft holds the files";
  EXPECT_TRUE(fs::exists(path));
  fs::remove(path);
  sweep_given(in_days(16));
  EXPECT_FALSE(fs::exists(given("20200101-000000"))) << "nobody has to know it any more";
}

TEST_F(GivenDraftsTest, AClockThatIsSetTakesNoFilesOfWhatWasPerhapsGiven) {
  static_cast<void>(draft("20200101-000000"));
  static_cast<void>(give("20200101-000000", {"x"}));
  Moment set_forward = in_days(0.1);
  set_forward.time += 400 * kDay;
  sweep_given(set_forward);
  EXPECT_TRUE(fs::exists(given("20200101-000000/files/0/x"))) << "a mail is being written with it";
}

TEST_F(GivenDraftsTest, WhatIsOfferedAgainStaysForSevenDaysMore) {
  const std::string path = draft("20200101-000000");
  give("20200101-000000", {"x"}).mark();
  std::ofstream(given("20200101-000000/given")) << "an-earlier-start 5\n";
  fs::last_write_time(given("20200101-000000/given"),
                      fs::file_time_type::clock::now() - std::chrono::hours(200));
  static_cast<void>(GivenDraft::again("20200101-000000"));
  sweep_given(in_days(6.99));
  EXPECT_TRUE(fs::exists(path));
  sweep_given(in_days(7.01));
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(GivenDraftsTest, WhatAnEarlierVersionDidNotWriteIsRemovedAndCounted) {
  for (const char* name : {"AbCdEf", "GhIjKl"}) {
    fs::create_directories(incoming_folder() + "/" + name);
    std::ofstream(incoming_folder() + "/" + name + "/0") << "x";
  }
  const auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = log});
  sweep(present_moment());
  sweep(present_moment());
  EXPECT_TRUE(fs::is_empty(incoming_folder()));
  EXPECT_EQ(log->lines(),
            std::vector<std::string>{
                "the files of drafts that an earlier version did not write are removed: 2"});
}

// A person may put the folders elsewhere, also into one with files of their own.
TEST_F(GivenDraftsTest, NothingOfTheUsersOwnIsSweptBehindALink) {
  const std::string own = folder_.path("own");
  const std::string receiver = folder_.path("quoll-compose");
  const char* const names[] = {".git",     ".Trash-1000",      "Photos",          "AbCdEf",
                               "20200101", "2020-0101-000000", "20200101-000000x"};
  for (const char* const name : names) {
    fs::create_directories(own + "/" + name);
    std::ofstream(own + "/" + name + "/file") << "x";
  }
  std::ofstream(own + "/.letter.eml") << "x";
  std::ofstream(own + "/.draft-notes") << "x";
  for (const char* const folder : {"taken", "drafts", "given", "incoming"}) {
    fs::remove_all(receiver + "/" + folder);
    fs::create_directory_symlink(own, receiver + "/" + folder);
  }
  sweep(in_days(4000, true));
  for (const char* const name : names) {
    EXPECT_TRUE(fs::exists(own + "/" + name + "/file")) << name;
  }
  EXPECT_TRUE(fs::exists(own + "/.letter.eml"));
  EXPECT_TRUE(fs::exists(own + "/.draft-notes"));
  EXPECT_EQ(taken_drafts(), std::vector<std::string>{}) << "nor is it a draft that waits";
}

TEST_F(GivenDraftsTest, ACopyElsewhereGoesWithItsDraft) {
  static_cast<void>(draft("20200101-000000"));
  std::string copy;
  {
    const auto given_draft = give("20200101-000000");
    copy = given_draft.copy_message_for("mail");
    given_draft.mark();
  }
  EXPECT_EQ(test::read_file(copy), "draft");
  EXPECT_EQ(fs::status(fs::path(copy).parent_path()).permissions(), fs::perms::owner_all);
  sweep_given(in_days(6));
  EXPECT_TRUE(fs::exists(copy));
  sweep_given(in_days(8));
  EXPECT_FALSE(fs::exists(copy));
  EXPECT_TRUE(fs::exists(folder_.path("home/snap/mail/common/quoll-compose")));
}

TEST_F(GivenDraftsTest, OnlyACopyThatWasMadeIsRemoved) {
  const std::string name = "20200101-000000";
  const std::string snap = folder_.path("home/snap/mail/common/");
  fs::create_directories(snap + "quoll-compose");
  fs::create_directories(folder_.path("home/own"));
  fs::create_directories(folder_.path("home/common/quoll-compose"));
  fs::create_directories(folder_.path("home/snap/linked/common"));
  fs::create_directory_symlink(folder_.path("home/own"),
                               folder_.path("home/snap/linked/common/quoll-compose"));
  const std::string files[] = {folder_.path("home/letter"),
                               folder_.path("home/common/quoll-compose/") + name + ".eml",
                               folder_.path("home/own/") + name + ".eml",
                               snap + "quoll-compose/20200101-000001.eml",
                               snap + name + ".eml",
                               snap + "quoll-compose/letter"};
  for (const std::string& file : files) {
    std::ofstream(file) << "x";
  }
  std::vector<std::string> links(std::begin(files), std::end(files));
  links.push_back(folder_.path("home/snap/linked/common/quoll-compose/") + name + ".eml");
  links.push_back(snap + "quoll-compose/../" + name + ".eml");
  links.push_back(folder_.path("home/snap/../common/quoll-compose/") + name + ".eml");
  for (const std::string& link : links) {
    static_cast<void>(draft(name));
    give(name).mark();
    fs::create_symlink(link, given(name + "/copy"));
    remove_written(name);
    for (const std::string& file : files) {
      EXPECT_TRUE(fs::exists(file)) << file << " by " << link;
    }
    EXPECT_FALSE(fs::exists(given(name))) << link;
  }
}

TEST_F(GivenDraftsTest, WhatLiesAmongThemIsNoHarm) {
  const std::string path = draft("20200101-000000");
  give("20200101-000000").mark();
  std::ofstream(given("20200101-000000/given")) << std::string(100000, 'x');
  std::ofstream(given("file")) << "x";
  fs::create_symlink("/nonexistent", given("link"));
  sweep_given(in_days(1));
  EXPECT_TRUE(fs::exists(path));
  sweep_given(in_days(8));
  EXPECT_FALSE(fs::exists(path));
}

}  // namespace
}  // namespace quoll::compose
