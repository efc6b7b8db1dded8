// What becomes of drafts when programs end in the middle: none is lost, none is opened twice.
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <map>
#include <thread>

#include "tests/integration/waiting_drafts.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class DraftStates : public WaitingDrafts {
 protected:
  void expect_kept_after_signal(int number);
};

std::vector<std::chrono::microseconds> moments() {
  return {0us, 300us, 1ms, 2ms, 4ms, 8ms, 15ms, 30ms, 60ms, 120ms};
}

// Writing the file takes far longer than the shortest of these moments.
void DraftStates::expect_kept_after_signal(int number) {
  const std::string content(20U << 20U, 'x');
  for (const auto moment : moments()) {
    const std::string path = home_.stage("big", content);
    const auto service = start_service();
    ASSERT_EQ(open("['" + ReceiverHome::url({path}) + "']").status, 0);
    fs::remove(path);
    std::this_thread::sleep_for(moment);
    kill(service->id(), number);
    service->wait();
    const auto resumed = home_.compose({"--resume"});
    EXPECT_EQ(resumed.status, 0) << resumed.errors;
    ASSERT_EQ(home_.drafts().size(), 1U) << moment.count();
    EXPECT_GT(fs::file_size(home_.drafts().front()), content.size()) << moment.count();
    EXPECT_TRUE(home_.taken().empty()) << moment.count();
    fs::remove(home_.drafts().front());
  }
}

TEST_F(DraftStates, AKilledReceiverLosesNothingThatItAnswered) {
  expect_kept_after_signal(SIGKILL);
}

TEST_F(DraftStates, AReceiverThatIsToldToEndLosesNothingThatItAnswered) {
  expect_kept_after_signal(SIGTERM);
}

TEST_F(DraftStates, TheNextStartGoesOnWithWhatWaits) {
  add_waiting("20200101-000000", "quoll://compose?subject=first", "x");
  add_waiting("20200101-000000-1", "quoll://compose?subject=second");
  EXPECT_EQ(home_.compose({"quoll://compose?subject=third"}).status, 0);
  EXPECT_EQ(home_.drafts().size(), 3U);
  add_waiting("20200101-000001", "quoll://compose?subject=fourth");
  const auto service = start_service();
  home_.wait_for_drafts();
}

TEST_F(DraftStates, ItEndsWithinASecondAndRefusesNewCalls) {
  choose("thunderbird", "X", "exec sleep 30");
  const auto service = start_service();
  ASSERT_EQ(open("['quoll://compose?subject=x']").status, 0);
  static_cast<void>(given());
  kill(service->id(), SIGTERM);
  EXPECT_EQ(service->wait(), 0) << "no alarm had to end it";
  EXPECT_TRUE(holds(listed(), "  perhaps given  ")) << "it waited for the client";
  EXPECT_NE(open("['quoll://compose?subject=y']").status, 0);
  EXPECT_EQ(home_.drafts().size(), 1U);
}

TEST_F(DraftStates, NoDraftIsOpenedTwice) {
  choose_counted("claws-mail", "exec sleep 1");
  for (const auto moment : moments()) {
    // A client that the killed one has started may write its line in the next round only.
    const std::string round = std::to_string(moment.count());
    const ScopedEnvironment environment({{"QUOLL_TEST_ROUND", round}});
    const std::string path = home_.stage("a", "x");
    const auto service = start_service();
    ASSERT_EQ(open("['" + ReceiverHome::url({path}) + "']").status, 0);
    std::this_thread::sleep_for(moment);
    kill(service->id(), SIGKILL);
    service->wait();
    const bool is_waiting = !home_.taken().empty();
    EXPECT_EQ(home_.compose({"--resume"}).status, 0);
    EXPECT_EQ(home_.drafts().size(), 1U) << moment.count();
    EXPECT_LE(starts(round), 1) << round;
    EXPECT_TRUE(starts(round) == 1 || !is_waiting) << round;
    EXPECT_TRUE(home_.taken().empty());
    fs::remove_all(home_.bus.data_home() + "/quoll-compose");
  }
}

TEST_F(DraftStates, ADraftThatWasPerhapsGivenIsSaidAndLeftAlone) {
  choose_counted("thunderbird", "exec sleep 20");
  const auto service = start_service();
  ASSERT_EQ(open("['quoll://compose?subject=x']").status, 0);
  while (starts() == 0) {
    std::this_thread::sleep_for(1ms);
  }
  kill(service->id(), SIGKILL);
  service->wait();
  EXPECT_TRUE(holds(listed(), "  perhaps given  x  ")) << listed();
  EXPECT_EQ(home_.compose({"--list"}).errors,
            "perhaps given: see whether the mail client has it; quoll-compose --again NAME gives "
            "it once more\n");
  EXPECT_EQ(home_.compose({"--resume"}).status, 0);
  EXPECT_EQ(starts(), 1);
  EXPECT_TRUE(holds(listed(), "  perhaps given  x  ")) << listed();
}

TEST_F(DraftStates, OneThatIsBeingGivenIsNotPerhapsGiven) {
  choose_counted("thunderbird", "exec sleep 20");
  Process receiver({QUOLL_COMPOSE, "quoll://compose?subject=x"}, home_.bus.environment());
  while (starts() == 0) {
    std::this_thread::sleep_for(1ms);
  }
  EXPECT_TRUE(holds(listed(), "  being given  x  ")) << listed();
  EXPECT_EQ(receiver.wait(), 0);
  EXPECT_TRUE(holds(listed(), "  given  x  ")) << "the list has changed nothing: " << listed();
}

TEST_F(DraftStates, TwoReceiversAtOnceDoEachDraftOnce) {
  choose_counted("claws-mail");
  constexpr int kDrafts = 8;
  for (int number = 0; number < kDrafts; ++number) {
    add_waiting("20200101-00000" + std::to_string(number), "quoll://compose?subject=x", "x");
  }
  {
    Process one({QUOLL_COMPOSE, "--resume"}, home_.bus.environment());
    Process other({QUOLL_COMPOSE, "--resume"}, home_.bus.environment());
    EXPECT_EQ(one.wait(), 0);
    EXPECT_EQ(other.wait(), 0);
  }
  EXPECT_EQ(starts(), kDrafts);
  EXPECT_EQ(home_.drafts().size(), static_cast<std::size_t>(kDrafts));
}

TEST_F(DraftStates, FourEndsOfTheProgramDoNotCount) {
  add_waiting("20200101-000000", "quoll://compose?subject=often");
  std::ofstream(taken_file("20200101-000000/attempts")) << "begun\nbegun\nbegun\nbegun\n";
  EXPECT_EQ(home_.compose({"--resume"}).status, 0);
  EXPECT_EQ(home_.drafts().size(), 1U);
}

TEST_F(DraftStates, ADraftThatEndsTheProgramHoldsUpNoOther) {
  const auto add = [&](const std::string& name, const std::string& attempts) {
    add_waiting(name, "quoll://compose?subject=x");
    std::ofstream(taken_file(name + "/attempts")) << attempts;
  };
  add("20200101-000000", "begun\nbegun\nbegun\n");
  add("20200101-000001", "begun\nbegun\n");
  add("20200101-000002", "begun\nbegun\nbegun\nbegun\nbegun\n");
  const std::string shown = home_.compose({"--resume"}).output;
  EXPECT_LT(shown.find("20200101-000001.eml"), shown.find("20200101-000000.eml")) << shown;
  EXPECT_EQ(home_.drafts().size(), 2U);
  EXPECT_TRUE(holds(listed(), "  set aside: the program ended while it was written, five times  "))
      << listed();
}

TEST_F(DraftStates, AnAttemptInWhichTheProgramEndsIsNoted) {
  add_waiting("20200101-000000", "quoll://compose?subject=x", std::string(20U << 20U, 'x'));
  const std::string attempts = taken_file("20200101-000000/attempts");
  std::ofstream(attempts) << "begun\n";
  Process receiver({QUOLL_COMPOSE, "--resume"}, home_.bus.environment());
  while (fs::exists(attempts) && read_file(attempts) != "begun\nbegun\n") {
  }
  kill(receiver.id(), SIGKILL);
  receiver.wait();
  EXPECT_EQ(read_file(attempts), "begun\nbegun\n");
}

TEST_F(DraftStates, WhatCannotBeWrittenIsSetAsideWithItsBytes) {
  add_waiting("20200101-000000", "this is no command", "bytes");
  add_waiting("20200101-000001", "quoll://compose?subject=another");
  const auto ended = home_.compose({"--resume"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(holds(ended.output, "The draft 20200101-000000 was set aside: ")) << ended.output;
  EXPECT_EQ(home_.drafts().size(), 1U) << "it holds up no other";
  EXPECT_EQ(read_file(taken_file("20200101-000000/files/0/file")), "bytes");
  const std::string attempts = read_file(taken_file("20200101-000000/attempts"));
  EXPECT_EQ(std::ranges::count(attempts, '\n'), 3) << attempts;
  EXPECT_TRUE(attempts.starts_with("failed the draft cannot be written")) << attempts;
  EXPECT_TRUE(holds(listed(), "  set aside: the draft cannot be written")) << listed();
  EXPECT_EQ(home_.compose({"--resume"}).output, "") << "nobody tries again";
}

TEST_F(DraftStates, WhatWasSetAsideStaysForThirtyDays) {
  const auto set_aside = [&](const std::string& name, int days) {
    add_waiting(name, "this is no command", "bytes");
    std::ofstream(taken_file(name + "/aside")) << "the reason\nan-earlier-start 5\n";
    fs::last_write_time(taken_file(name + "/aside"),
                        fs::file_time_type::clock::now() - std::chrono::hours(24 * days - 1));
  };
  set_aside("20200101-000000", 31);
  set_aside("20200101-000001", 30);
  EXPECT_EQ(home_.compose({"quoll://compose?subject=x"}).status, 0);
  EXPECT_FALSE(fs::exists(taken_file("20200101-000000")));
  EXPECT_TRUE(fs::exists(taken_file("20200101-000001/files/0/file")));
}

TEST_F(DraftStates, ASenderThatAsksIsToldWhatWasLeftOut) {
  const std::string good = home_.stage("good", "x");
  const auto service = start_service();
  const std::string urls = "['" + ReceiverHome::url({"/etc/passwd", good, "/a\nb"}) + "']";
  const auto told = open(urls, "{'quoll-report': <true>}");
  EXPECT_NE(told.status, 0);
  const std::string drafts = home_.drafts_folder();
  const std::string start = "it.vorlent.quoll2.Error.LeftOut: " + drafts + "/";
  const auto at = told.errors.find(start);
  ASSERT_NE(at, std::string::npos) << told.errors;
  home_.wait_for_drafts();
  const std::string draft = home_.drafts().front();
  EXPECT_TRUE(holds(told.errors, draft + "\n/etc/passwd: it is outside the shared folder\n"
                                         "/a\\nb: it is outside the shared folder"))
      << told.errors;
  EXPECT_TRUE(holds(ReceiverHome::read_message(draft), "\"good\" 78\n"));
  EXPECT_EQ(open(urls).status, 0) << "others get the plain reply";
  EXPECT_EQ(open(urls, "{'quoll-report': <false>}").status, 0);
  const std::string whole = "['" + ReceiverHome::url({good}) + "']";
  EXPECT_EQ(open(whole, "{'quoll-report': <true>}").status, 0);
  const auto place = open(whole, "{'quoll-draft': <true>}");
  home_.wait_for_drafts();
  const auto drafts_now = home_.drafts();
  EXPECT_TRUE(std::ranges::any_of(drafts_now, [&](const std::string& path) {
    return holds(place.errors, "it.vorlent.quoll2.Error.Taken: " + path + "\n");
  })) << place.errors;
}

// The pipe is closed when the files were taken, long before the client has ended, and nobody else
// has it.
TEST_F(DraftStates, ASenderWithoutABusIsToldByThePipe) {
  choose("claws-mail", "X",
         "ls -l /proc/$$/fd > '" + home_.bus.path("descriptors") +
             "'\necho \"variable=$QUOLL_TAKEN_PIPE\" >> '" + home_.bus.path("descriptors") +
             "'\nsleep 2; echo > '" + home_.bus.path("client-ended") + "'");
  const std::string fifo = home_.bus.path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const auto told = [&](const Words& urls) {
    fs::remove(home_.bus.path("client-ended"));
    Words command{"sh", "-c", "exec 9> '" + fifo + "'; QUOLL_TAKEN_PIPE=9 exec \"$0\" \"$@\"",
                  QUOLL_COMPOSE};
    command.insert(command.end(), urls.begin(), urls.end());
    Process receiver(command, home_.bus.environment());
    const std::string text = run({"cat", fifo}).output;
    EXPECT_FALSE(fs::exists(home_.bus.path("client-ended"))) << "it waited for the client";
    receiver.wait();
    return text;
  };
  const std::string good = home_.stage("good", "x");
  const std::string path = told({ReceiverHome::url({good})});
  const std::string descriptors = read_file(home_.bus.path("descriptors"));
  EXPECT_FALSE(holds(descriptors, "fifo")) << descriptors;
  EXPECT_TRUE(holds(descriptors, "variable=\n")) << descriptors;
  const std::string draft = home_.drafts().front();
  EXPECT_EQ(path, draft);
  fs::remove(draft);
  EXPECT_TRUE(told({ReceiverHome::url({good, "/etc/passwd"})})
                  .ends_with(".eml\n/etc/passwd: it is outside the shared folder"));
  EXPECT_EQ(told({"quoll://send"}), "\n");
}

TEST_F(DraftStates, TheListShowsEachStateAndChangesNothing) {
  EXPECT_EQ(listed(), "");
  EXPECT_FALSE(fs::exists(home_.bus.data_home() + "/quoll-compose"));
  choose("claws-mail", "X");
  ASSERT_EQ(compose({"quoll://compose?subject=given"}).status, 0);
  make_default("nobody");
  ASSERT_EQ(compose({"quoll://compose?subject=kept"}).status, 0);
  add_waiting("20200101-000000", "quoll://compose?subject=waits", "x");
  add_waiting("20200101-000001", "no command", "x");
  std::ofstream(taken_file("20200101-000001/aside")) << "the reason\n";
  fs::create_directories(taken_file(".20190101-000000"));
  std::ofstream(home_.drafts_folder() + "/.20200101-000000.eml") << "half";
  std::ofstream(home_.drafts_folder() + "/20190101-000000.eml") << "Subject: of long ago\n\n";
  const auto all = [&] {
    std::map<std::string, fs::file_time_type> times;
    for (const auto& entry :
         fs::recursive_directory_iterator(home_.bus.data_home() + "/quoll-compose")) {
      times[entry.path()] = entry.last_write_time();
    }
    return times;
  };
  const auto before = all();
  const Ended ended = home_.compose({"--list"});
  const std::string& list = ended.output;
  EXPECT_EQ(all(), before);
  EXPECT_EQ(ended.errors,
            "waiting: quoll-compose --resume goes on with it\n"
            "set aside: what was shared lies in its folder for 30 days, the files in PATH/files; "
            "quoll-compose --delete NAME removes it\n"
            "kept: quoll-compose --again NAME gives it to a mail client, quoll-compose --open NAME "
            "opens it, quoll-compose --files NAME shows its files\n");
  EXPECT_TRUE(holds(list, "  given  given  ")) << list;
  EXPECT_TRUE(holds(list, "  kept: no mail client is chosen for mail links  kept  ")) << list;
  EXPECT_TRUE(holds(list, "  kept  of long ago  ")) << list;
  EXPECT_TRUE(holds(list, "  waiting  " + taken_file("20200101-000000\n"))) << list;
  EXPECT_TRUE(holds(list, "  set aside: the reason  " + taken_file("20200101-000001\n"))) << list;
  EXPECT_EQ(std::ranges::count(list, '\n'), 5) << list;
}

TEST_F(DraftStates, AFileThatIsNoMessageHidesNoOther) {
  fs::create_directories(home_.drafts_folder());
  std::ofstream(home_.drafts_folder() + "/20190101-000000.eml") << "Subject: first\n\n";
  std::ofstream(home_.drafts_folder() + "/20190101-000001.eml") << "x";
  std::ofstream(home_.drafts_folder() + "/20190101-000002.eml") << "Subject: last\n\n";
  const auto list = home_.compose({"--list"});
  EXPECT_EQ(list.status, 0) << list.errors;
  EXPECT_TRUE(holds(list.output, "  first  ") && holds(list.output, "  last  ") &&
              holds(list.output, "  (cannot be read)  "))
      << list.output;
}

TEST_F(DraftStates, WhatIsTakenMayLieElsewhere) {
  fs::create_directories(home_.bus.path("large-disk"));
  fs::create_directories(home_.bus.data_home() + "/quoll-compose");
  fs::create_directory_symlink(home_.bus.path("large-disk"), home_.taken_folder());
  add_waiting("20200101-000000", "quoll://compose?subject=waits", "x");
  EXPECT_TRUE(holds(listed(), "  waiting  "));
  EXPECT_EQ(home_.compose({"--resume"}).status, 0);
  EXPECT_EQ(home_.drafts().size(), 1U);
  EXPECT_TRUE(fs::is_empty(home_.bus.path("large-disk")));
}

TEST_F(DraftStates, WhatAKilledReceiverLeftIsSwept) {
  fs::create_directories(taken_file(".20190101-000000/files/0"));
  fs::create_directories(taken_file(".quoll-incoming-0123456789abcdef"));
  fs::create_directories(home_.drafts_folder());
  std::ofstream(home_.drafts_folder() + "/.20200101-000000.eml") << "half";
  const posix::UniqueFd making(
      ::open(taken_file(".quoll-incoming-0123456789abcdef").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(making.get(), LOCK_EX), 0);
  EXPECT_EQ(home_.compose({"quoll://compose?"}).status, 0);
  EXPECT_EQ(home_.taken(), Words{taken_file(".quoll-incoming-0123456789abcdef")})
      << "somebody works on it";
  EXPECT_EQ(home_.drafts().size(), 1U);
}

// Whoever made the folder may have its lock a moment later, and must not lose what it puts there.
TEST_F(DraftStates, WhatIsSweptIsLockedUntilItIsGone) {
  const std::string path = taken_file(".20190101-000000");
  fs::create_directories(path);
  std::ofstream(path + "/0");
  for (int i = 1; i < 20'000; ++i) {
    fs::create_hard_link(path + "/0", path + "/" + std::to_string(i));
  }
  const posix::UniqueFd folder(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  const auto before = fs::last_write_time(path);
  Process receiver({QUOLL_COMPOSE, "quoll://compose?"}, home_.bus.environment());
  std::error_code gone;
  while (fs::last_write_time(path, gone) == before && !gone) {
  }
  const bool is_free = flock(folder.get(), LOCK_EX | LOCK_NB) == 0;
  EXPECT_TRUE(!is_free || !fs::exists(path)) << "the lock was given back before the end";
  EXPECT_EQ(receiver.wait(), 0);
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(DraftStates, WhatEarlierVersionsLeftIsSweptOnceTheyHaveEnded) {
  const std::string own = home_.bus.data_home() + "/quoll-compose";
  fs::create_directories(own + "/incoming/AbCdEf");
  fs::create_directories(own + "/drafts");
  std::ofstream(own + "/incoming/AbCdEf/0") << "x";
  std::ofstream(own + "/drafts/.draft-AbCdEf") << "x";
  {
    const posix::UniqueFd earlier(::open((own + "/incoming").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(flock(earlier.get(), LOCK_SH), 0);
    EXPECT_EQ(home_.compose({"quoll://compose?"}).status, 0);
    EXPECT_TRUE(fs::exists(own + "/incoming/AbCdEf/0"));
    EXPECT_TRUE(fs::exists(own + "/drafts/.draft-AbCdEf"));
  }
  EXPECT_EQ(home_.compose({"quoll://compose?"}).status, 0);
  EXPECT_TRUE(fs::is_empty(own + "/incoming")) << "one of them may wait for the lock of the folder";
  EXPECT_FALSE(fs::exists(own + "/drafts/.draft-AbCdEf"));
  EXPECT_EQ(home_.drafts().size(), 2U);
}

TEST_F(DraftStates, ResumingWithNothingToDoMakesNothing) {
  EXPECT_EQ(home_.compose({"--resume"}).status, 0);
  EXPECT_FALSE(fs::exists(home_.bus.data_home() + "/quoll-compose"));
}

}  // namespace
}  // namespace quoll::test
