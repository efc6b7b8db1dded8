// Many drafts at once: few windows, few descriptors, and none is lost.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/integration/waiting_drafts.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class DraftFloods : public WaitingDrafts {};

TEST_F(DraftFloods, AFloodOpensNoWindow) {
  choose_counted("claws-mail");
  Process desktop({NOTIFICATION_DOUBLE}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  const auto service = start_service();
  std::string urls;
  for (int number = 0; number < 30; ++number) {
    urls += std::string(urls.empty() ? "" : ", ") + "'quoll://compose?subject=x'";
  }
  ASSERT_EQ(open("[" + urls + "]").status, 0);
  home_.wait_for_drafts();
  ASSERT_EQ(starts(), 0);
  EXPECT_EQ(desktop.read_line(),
            "Many drafts are kept|So many came at once that no mail client was started for them. "
            "They lie in " +
                home_.drafts_folder() + ".");
  EXPECT_EQ(home_.drafts().size(), 30U);
  ASSERT_EQ(open("['quoll://compose?subject=y']").status, 0);
  home_.wait_for_drafts();
  while (starts() == 0) {
    std::this_thread::sleep_for(5ms);
  }
}

TEST_F(DraftFloods, TenDraftsAreNoFlood) {
  choose_counted("claws-mail");
  EXPECT_EQ(compose(Words(10, "quoll://compose?subject=x")).status, 0);
  EXPECT_EQ(starts(), 10);
}

// A page may have a program started for each of its links.
TEST_F(DraftFloods, ManyProgramsAtOnceOpenTenWindowsInTenSeconds) {
  choose_counted("claws-mail");
  Process desktop({NOTIFICATION_DOUBLE}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  constexpr std::size_t kPrograms = 40;
  const auto begin = std::chrono::steady_clock::now();
  {
    std::vector<std::unique_ptr<Process>> programs;
    for (std::size_t number = 0; number < kPrograms; ++number) {
      programs.push_back(std::make_unique<Process>(
          Words{QUOLL_COMPOSE, "quoll://compose?subject=x"}, home_.bus.environment()));
    }
    for (const auto& program : programs) {
      EXPECT_EQ(program->wait(), 0);
    }
  }
  const auto times = 1 + (std::chrono::steady_clock::now() - begin) / 10s;
  EXPECT_GE(starts(), 1);
  EXPECT_LE(starts(), 10 * times);
  EXPECT_EQ(home_.drafts().size(), kPrograms);
  EXPECT_TRUE(home_.taken().empty());
  kill(desktop.id(), SIGTERM);
  const std::string shown = desktop.read_output();
  EXPECT_TRUE(holds(shown, "no mail client was started")) << shown;
  EXPECT_LE(std::ranges::count(shown, '\n'), times) << shown;
}

TEST_F(DraftFloods, WhatAnotherProgramOfferedCounts) {
  choose_counted("claws-mail");
  const Words command{QUOLL_COMPOSE,      "quoll://compose?", "quoll://compose?",
                      "quoll://compose?", "quoll://compose?", "quoll://compose?",
                      "quoll://compose?"};
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(run(command, home_.bus.environment()).status, 0);
  EXPECT_EQ(starts(), 6);
  EXPECT_EQ(run(command, home_.bus.environment()).status, 0);
  EXPECT_LE(starts(), 10 * (1 + (std::chrono::steady_clock::now() - begin) / 10s));
  EXPECT_EQ(home_.drafts().size(), 12U);
}

TEST_F(DraftFloods, ManyThatWaitNeedFewDescriptors) {
  constexpr std::size_t kDrafts = 200;
  for (std::size_t number = 0; number < kDrafts; ++number) {
    add_waiting("20200101-000000-" + std::to_string(number), "quoll://compose?subject=x");
  }
  add_waiting("20200101-000000", "this is no command");
  const auto ended =
      run({"sh", "-c", "ulimit -n 64; exec " QUOLL_COMPOSE " --resume"}, home_.bus.environment());
  EXPECT_EQ(ended.status, 1) << "of the one that is no command";
  EXPECT_EQ(ended.errors, "");
  EXPECT_EQ(home_.drafts().size(), kDrafts);
  EXPECT_TRUE(holds(listed(), "  set aside: ")) << listed();
}

// Nobody knows then how many were offered.
// A number of programs without end could call otherwise, each with its notification.
TEST_F(DraftFloods, WithoutAListOfMomentsFewAreToldOf) {
  choose_counted("claws-mail");
  fs::create_directories(fs::path(home_.taken_folder()).parent_path() / "recent-offers");
  Process desktop({NOTIFICATION_DOUBLE}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  const auto service = start_service();
  for (int i = 0; i < 14; ++i) {
    ASSERT_EQ(open("['quoll://compose?subject=x']").status, 0);
    while (home_.drafts().size() < static_cast<std::size_t>(i) + 1 || !home_.taken().empty()) {
      std::this_thread::sleep_for(1ms);
    }
  }
  kill(service->id(), SIGTERM);
  EXPECT_EQ(service->wait(), 0);
  kill(desktop.id(), SIGTERM);
  const std::string shown = desktop.read_output();
  std::size_t times = 0;
  for (auto at = shown.find("The draft is kept"); at != std::string::npos;
       at = shown.find("The draft is kept", at + 1)) {
    ++times;
  }
  EXPECT_GE(times, 1U);
  EXPECT_LE(times, 10U) << shown;
}

TEST_F(DraftFloods, WithoutAListOfMomentsDraftsAreKept) {
  choose_counted("claws-mail");
  const fs::path list = fs::path(home_.taken_folder()).parent_path() / "recent-offers";
  const std::string said = list.string() + " cannot be used: ";
  const auto expect_kept = [&](const std::string& reason) {
    const auto kept = home_.compose({"quoll://compose?subject=x"});
    EXPECT_EQ(kept.status, 0) << kept.errors;
    EXPECT_TRUE(holds(kept.output, said + reason)) << kept.output << kept.errors;
    EXPECT_EQ(starts(), 0);
    EXPECT_TRUE(home_.taken().empty());
    const auto checked = home_.compose({"--check"});
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(checked.errors, "quoll-compose: " + said + reason + "\n");
    fs::remove(list);
  };
  fs::create_directories(list);
  expect_kept("Is a directory");
  fs::create_symlink("/nowhere", list);
  expect_kept("Too many levels of symbolic links");
  ASSERT_EQ(mkfifo(list.c_str(), 0600), 0);
  expect_kept("it is no file");
  std::ofstream(list) << "";
  const posix::UniqueFd held(::open(list.c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(held.get(), LOCK_EX), 0);
  expect_kept("another program has locked it");
  EXPECT_EQ(home_.compose({"--check"}).status, 0);
  EXPECT_EQ(home_.drafts().size(), 4U);
}

TEST_F(DraftFloods, WithTooFewDescriptorsADraftWaits) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer needs descriptors of its own";
  }
  for (int most = 5; most < 12; ++most) {
    add_waiting("20200101-000000", "quoll://compose?subject=x", "content");
    const std::string limit = "ulimit -n " + std::to_string(most);
    const auto ended =
        run({"sh", "-c", limit + "; exec " QUOLL_COMPOSE " --resume"}, home_.bus.environment());
    EXPECT_FALSE(holds(listed(), "  set aside: ")) << limit << listed();
    EXPECT_EQ(home_.drafts().size() + home_.taken().size(), 1U)
        << limit << ended.output << ended.errors;
    fs::remove_all(home_.drafts_folder());
    fs::remove_all(home_.taken_folder());
    fs::remove_all(home_.given_folder());
  }
}

}  // namespace
}  // namespace quoll::test
