#include "quoll/linux/gio/launcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <thread>

#include "quoll/linux/gio/fields.h"
#include "tests/integration/private_bus.h"
#include "tests/support/recorders.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kName = "it.vorlent.quoll2";
constexpr auto kForeground = platform::NSWorkspaceLaunchAllowingClassicStartup;
constexpr auto kBackground = platform::NSWorkspaceLaunchWithoutActivation;
// Nothing here waits for it, but where the application hangs.
constexpr auto kLong = 60s;

class LauncherTest : public testing::Test {
 protected:
  bool open(const std::vector<std::string>& urls,
            platform::NSWorkspaceLaunchOptions options = kForeground,
            std::chrono::milliseconds time_out = kLong, const std::string& name = kName) {
    left_out_.clear();
    std::vector<std::shared_ptr<foundation::NSURL>> list;
    for (const auto& url : urls) {
      list.push_back(foundation::NSURL::URLWithString(url));
    }
    const ScopedEnvironment environment(environment_);
    const platform::ScopedDesktop desktop({.log = log_});
    const auto launcher = gio::start_launcher({.applications = {name}}, time_out);
    const bool is_opened = launcher->openURLs(list, name, options);
    for (const auto& [what, why] : launcher->left_out()) {
      left_out_.push_back(what + ": " + why);
    }
    return is_opened;
  }
  /// Opens a URL with a program that closes its pipe in this way.
  bool open_by_pipe(const std::string& how, std::chrono::milliseconds time_out = kLong) {
    bus_.add_entry(kName, "[Desktop Entry]\nType=Application\nName=Double\nExec=" RECEIVER_DOUBLE
                          " take " +
                              how + " " + record_path() + " %U\nX-Quoll-TakenPipe=true\n");
    return open({"quoll://compose?"}, kForeground, time_out);
  }
  /// What the application says that it left out.
  void leave_out(const std::string& text) const {
    std::ofstream(record_path() + ".left-out", std::ios::binary) << text;
  }
  [[nodiscard]] std::string record_path() const { return bus_.path("record"); }
  /// A program that was only started is waited for; the runner's limit ends a wait in vain.
  [[nodiscard]] std::string record() const {
    while (!std::filesystem::exists(record_path())) {
      std::this_thread::sleep_for(10ms);
    }
    return read_file(record_path());
  }
  [[nodiscard]] std::vector<std::string> bus_double(const std::string& mode,
                                                    const std::string& name = kName) const {
    return {RECEIVER_DOUBLE, "bus", name, mode, record_path()};
  }
  void add_service(const std::string& mode) const {
    std::string command;
    for (const auto& word : bus_double(mode)) {
      command += (command.empty() ? "" : " ") + word;
    }
    bus_.add_service(kName, command);
  }
  void add_entry(const std::string& more = "") const {
    bus_.add_entry(kName, "[Desktop Entry]\nType=Application\nName=Double\nExec=" RECEIVER_DOUBLE
                          " exec " +
                              record_path() + " %U\n" + more);
  }
  [[nodiscard]] std::string entry_path() const {
    return bus_.data_home() + "/applications/" + kName + ".desktop";
  }
  [[nodiscard]] std::string only_line() const {
    const auto lines = log_->lines();
    EXPECT_EQ(lines.size(), 1U);
    return lines.empty() ? "" : lines.front();
  }

  PrivateBus bus_;
  Environment environment_ = bus_.environment();
  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
  std::vector<std::string> left_out_;
};

TEST_F(LauncherTest, ARunningApplicationGetsTheUrlsInOrder) {
  Process receiver(bus_double("answer"), environment_);
  ASSERT_EQ(receiver.read_line(), "ready");
  ASSERT_TRUE(open({"quoll://compose?subject=a%20b", "quoll://compose?subject=c"}));
  EXPECT_EQ(record(), "uri quoll://compose?subject=a%20b\nuri quoll://compose?subject=c\n");
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(LauncherTest, AnApplicationThatDoesNotRunIsStartedByTheBus) {
  add_service("answer");
  ASSERT_TRUE(open({"quoll://compose?"}));
  EXPECT_EQ(record(), "uri quoll://compose?\n");
}

TEST_F(LauncherTest, OneLauncherOpensAgainAndAgain) {
  add_service("answer");
  const ScopedEnvironment environment(environment_);
  const platform::ScopedDesktop desktop({.log = log_});
  const auto launcher = gio::start_launcher({}, kLong);
  for (const char* url : {"quoll://compose?a", "quoll://compose?b"}) {
    ASSERT_TRUE(launcher->openURLs({foundation::NSURL::URLWithString(url)}, kName, kForeground));
    EXPECT_EQ(record(), std::string("uri ") + url + "\n");
  }
}

TEST_F(LauncherTest, TokensGoToTheApplicationAndLeaveTheEnvironment) {
  environment_["XDG_ACTIVATION_TOKEN"] = "token-1";
  environment_["DESKTOP_STARTUP_ID"] = "startup-1";
  add_service("answer");
  const ScopedEnvironment environment(environment_);
  const auto launcher = gio::start_launcher({}, kLong);
  EXPECT_EQ(std::getenv("XDG_ACTIVATION_TOKEN"), nullptr);
  EXPECT_EQ(std::getenv("DESKTOP_STARTUP_ID"), nullptr);
  ASSERT_TRUE(launcher->openURLs({foundation::NSURL::URLWithString("quoll://compose?")}, kName,
                                 kForeground));
  EXPECT_EQ(record(),
            "uri quoll://compose?\nactivation-token token-1\ndesktop-startup-id startup-1\n");
}

TEST_F(LauncherTest, InTheBackgroundNoTokenIsSent) {
  environment_["XDG_ACTIVATION_TOKEN"] = "token-1";
  environment_["DESKTOP_STARTUP_ID"] = "startup-1";
  add_service("answer");
  ASSERT_TRUE(open({"quoll://compose?"}, kBackground));
  EXPECT_EQ(record(), "uri quoll://compose?\n");
}

TEST_F(LauncherTest, AHyphenOfTheIdentifierIsAnUnderscoreOfThePath) {
  const std::string name = "it.vorlent.quoll2-beta";
  Process receiver(bus_double("answer", name), environment_);
  ASSERT_EQ(receiver.read_line(), "ready");
  ASSERT_TRUE(open({"quoll://compose?"}, kForeground, kLong, name));
}

TEST_F(LauncherTest, AMegabyteArrivesWhole) {
  add_service("answer");
  const std::string url = "quoll://compose?htmlBody=" + std::string(1U << 20U, 'x');
  ASSERT_TRUE(open({url}));
  EXPECT_EQ(record(), "uri " + url + "\n");
}

TEST_F(LauncherTest, AsMuchAsABusMessageCarriesIsOpenedAndNoMore) {
  constexpr std::size_t kLimit = (std::size_t{64} << 20U) - 9;
  const std::string head = "quoll://compose?htmlBody=";
  add_service("answer");
  EXPECT_FALSE(open({head + std::string(kLimit + 1 - head.size(), 'x')}));
  EXPECT_EQ(only_line(),
            "openURLs it is too long: less than 64 MiB can be handed over; share a long text as a "
            "file");
  const std::string longest = head + std::string(kLimit - head.size(), 'x');
  ASSERT_TRUE(open({longest})) << log_->lines().back();
  EXPECT_TRUE(record() == "uri " + longest + "\n");
}

TEST_F(LauncherTest, AListThatClaimsMoreThanTheLimitIsNotReceived) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  const posix::UniqueFd here(ends[0]);
  const posix::UniqueFd there(ends[1]);
  const std::uint32_t claim = (256U << 20U) + 1;
  ASSERT_EQ(::write(here.get(), &claim, sizeof claim), static_cast<ssize_t>(sizeof claim));
  EXPECT_FALSE(gio::receive_fields(there.get())) << "without waiting for the rest";
  EXPECT_FALSE(gio::send_fields(here.get(), {std::string(256U << 20U, 'x')}));
}

TEST_F(LauncherTest, NothingAndNullAreNotOpened) {
  add_service("answer");
  EXPECT_FALSE(open({}));
  EXPECT_FALSE(open({""}));  // no URL, so a null one
  EXPECT_EQ(log_->lines(), (std::vector<std::string>{
                               "openURLs there is nothing to open",
                               "openURLs a URL is empty, is not UTF-8 or holds a zero byte"}));
}

TEST_F(LauncherTest, AnApplicationThatDoesNotAnswerIsNotOpened) {
  add_service("hang");
  EXPECT_FALSE(open({"quoll://compose?"}, kForeground, 300ms));
  EXPECT_EQ(only_line(), "openURLs the mail application did not answer within 300 ms");
}

TEST_F(LauncherTest, AnApplicationThatEndsWithoutAnAnswerIsNotOpened) {
  add_service("exit");
  EXPECT_FALSE(open({"quoll://compose?"}));
  EXPECT_EQ(only_line(), "openURLs the mail application ended before it had taken it");
}

TEST_F(LauncherTest, TheApplicationsOwnReasonIsPassedOnAndNotLogged) {
  add_service("refuse");
  EXPECT_FALSE(open({"quoll://compose?"}));
  EXPECT_EQ(only_line(), "openURLs the mail application refuses") << "it may hold names";
  EXPECT_EQ(log_->events().back().error->text, "the mail application refuses: the disk is full");
}

TEST_F(LauncherTest, WhatTheApplicationLeavesOutIsToldAndTheRestIsOpened) {
  struct Row {
    const char* reason;
    std::string said;
    std::vector<std::string> told;
  };
  const std::string line = "name: " + std::string(94, 'r') + "\n";
  std::string many = "/drafts/1.eml\n";
  while (many.size() < (2U << 20U)) {
    many += line;
  }
  const Row rows[] = {
      {"two names",
       "/drafts/1.eml\na.txt: it is a link\nb: c.txt: it is a folder",
       {"a.txt: it is a link", "b: c.txt: it is a folder"}},
      {"control characters and empty lines",
       "\n/drafts/1.eml\na\x1B[2J: \x07\n\n",
       {"a\\x1B[2J: \\x07"}},
      {"two drafts", "/drafts/1.eml\na: x\n\n/drafts/2.eml\nb: y", {"a: x", "b: y"}},
      {"no reason", "/drafts/1.eml\na.txt", {"a.txt: it was not taken"}},
      {"nothing is named", "/drafts/1.eml", {"something: the mail application does not say what"}},
      {"no text at all", "", {"something: the mail application does not say what"}},
      {"no line at all in a megabyte", std::string(1U << 20U, 'x'), {"...: it was not taken"}},
      {"one line of a megabyte",
       "/drafts/1.eml\n" + std::string(1U << 20U, 'x'),
       {"...: it was not taken"}},
  };
  add_service("left-out");
  for (const Row& row : rows) {
    leave_out(row.said);
    EXPECT_TRUE(open({"quoll://compose?"})) << row.reason;
    EXPECT_EQ(left_out_, row.told) << row.reason;
  }
  leave_out(many);
  EXPECT_TRUE(open({"quoll://compose?"}));
  ASSERT_EQ(left_out_.size(), 101U);
  EXPECT_EQ(left_out_.back(), "...: there are more");
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(LauncherTest, AReasonOfMegabytesIsCutShort) {
  add_service("refuse-at-length");
  EXPECT_FALSE(open({"quoll://compose?"}));
  EXPECT_EQ(only_line(), "openURLs the mail application refuses");
  const std::string reason = log_->events().back().error->text;
  EXPECT_LT(reason.size(), 10'000U);
  EXPECT_TRUE(reason.starts_with("the mail application refuses: xxx"));
}

TEST_F(LauncherTest, AStartedProgramThatTellsIsWaitedFor) {
  leave_out("/drafts/1.eml\na.txt: not \xFF UTF-8\n");
  // Not a thread of this program: it forks the launcher while it opens.
  const Process later({"sh", "-c",
                       "until [ -e '" + record_path() +
                           "' ]; do sleep 0.01; done; sleep 0.05; : > '" + record_path() + ".go'"},
                      environment_);
  EXPECT_TRUE(open_by_pipe("wait"));
  EXPECT_TRUE(std::filesystem::exists(record_path() + ".go")) << "it was not waited for";
  EXPECT_TRUE(record().starts_with("uri quoll://compose?\n"));
  EXPECT_EQ(left_out_, std::vector<std::string>{"a.txt: not %FF UTF-8"});
  leave_out("");
  EXPECT_TRUE(open_by_pipe("tell"));
  EXPECT_EQ(left_out_, std::vector<std::string>());
  leave_out("\n");
  EXPECT_FALSE(open_by_pipe("tell")) << "a command was refused";
  EXPECT_EQ(only_line(), "openURLs the mail application refuses");
  leave_out("/drafts/1.eml\n" + std::string(1U << 20U, 'x'));
  EXPECT_TRUE(open_by_pipe("tell")) << "it is read to the end";
  EXPECT_EQ(left_out_, std::vector<std::string>{"...: it was not taken"});
}

TEST_F(LauncherTest, AStartedProgramThatNeverTellsIsWaitedForUntilTheTimeOut) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(open_by_pipe("stay", 300ms));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 300ms);
}

TEST_F(LauncherTest, AStartedProgramThatFailsHasTakenNothing) {
  EXPECT_FALSE(open_by_pipe("fail"));
  EXPECT_EQ(only_line(), "openURLs the mail application ended before it had taken it");
}

TEST_F(LauncherTest, AServiceThatCannotBeStartedIsNotOpened) {
  const std::string begin = "openURLs the mail application could not be started: ";
  const std::string file = bus_.path("system-data/dbus-1/services/") + kName + ".service";
  bus_.add_service(kName, "/bin/false");
  EXPECT_FALSE(open({"quoll://compose?"}));
  EXPECT_EQ(only_line(), begin + "its program ended at once");
  bus_.add_service(kName, "/nonexistent/program");
  EXPECT_FALSE(open({"quoll://compose?"}));
  EXPECT_EQ(log_->lines().back(), begin + "/nonexistent/program, which " + file +
                                      " starts, does not exist; install the package of " + file +
                                      " again");
}

TEST_F(LauncherTest, WithoutAnyApplicationTheReasonSaysWhatToInstall) {
  EXPECT_FALSE(open({"quoll://compose?"}));
  EXPECT_EQ(only_line(),
            "openURLs no mail application answers; install the mail application or quoll-compose");
  const foundation::Error error = *log_->events().back().error;
  EXPECT_EQ(error.text, "no mail application answers");
  const std::string* const advice = error.detail(gio::kAdviceKey);
  ASSERT_NE(advice, nullptr);
  EXPECT_EQ(*advice, "install the mail application or quoll-compose");
}

TEST_F(LauncherTest, AnIdentifierThatIsNoneIsRefused) {
  for (const std::string name :
       {"it.vorlent.quoll..x", "it.vorlent.quoll/../evil", "it.vorlent.quoll.b c"}) {
    EXPECT_FALSE(open({"quoll://compose?"}, kForeground, kLong, name)) << name;
    EXPECT_TRUE(log_->lines().back().starts_with("openURLs no application can have")) << name;
  }
}

TEST_F(LauncherTest, AnEntryThatCannotBeUsedIsToldFromNone) {
  struct Row {
    const char* reason;
    const char* content;
  };
  const Row rows[] = {
      {"its program is missing",
       "[Desktop Entry]\nType=Application\nName=X\nExec=/nonexistent/program %U\n"},
      {"it is not an entry", "garbage \x01\x02"},
      {"it has no program", "[Desktop Entry]\nType=Application\nName=X\n"},
  };
  for (const auto& row : rows) {
    bus_.add_entry(kName, row.content);
    EXPECT_FALSE(open({"quoll://compose?"})) << row.reason;
    const std::string line = log_->lines().back();
    EXPECT_TRUE(line.starts_with("openURLs " + entry_path() + " ")) << row.reason << ": " << line;
    EXPECT_TRUE(line.ends_with("install its package again")) << row.reason << ": " << line;
  }
}

TEST_F(LauncherTest, AnEntryThatTakesNoUrlsIsNotStarted) {
  bus_.add_entry(kName, "[Desktop Entry]\nType=Application\nName=X\nExec=" RECEIVER_DOUBLE
                        " exec " +
                            record_path() + "\n");
  EXPECT_FALSE(open({"quoll://compose?"}));
  EXPECT_EQ(only_line(), "openURLs " + entry_path() +
                             " does not say where links go; add %u to its line Exec, or install "
                             "its package again");
}

TEST_F(LauncherTest, WithoutAServiceTheEntrysProgramIsStarted) {
  add_entry();
  ASSERT_TRUE(open({"quoll://compose?a=%20", "quoll://compose?b"}));
  EXPECT_TRUE(record().starts_with("uri quoll://compose?a=%20\nuri quoll://compose?b\n"))
      << record();
}

TEST_F(LauncherTest, AnEntryThatPromisesAServiceNobodyProvidesIsStartedToo) {
  add_entry("DBusActivatable=true\n");
  ASSERT_TRUE(open({"quoll://compose?a"}));
  EXPECT_TRUE(record().starts_with("uri quoll://compose?a\n")) << record();
}

TEST_F(LauncherTest, WithoutABusTheEntrysProgramIsStarted) {
  environment_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
  add_entry();
  ASSERT_TRUE(open({"quoll://compose?a"}));
  EXPECT_TRUE(record().starts_with("uri quoll://compose?a\n")) << record();
}

TEST_F(LauncherTest, WithoutABusAndAnEntryTheReasonSaysSo) {
  environment_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
  EXPECT_FALSE(open({"quoll://compose?a"}));
  EXPECT_NE(only_line().find("there is no session bus"), std::string::npos) << only_line();
}

TEST_F(LauncherTest, AnArgumentAtTheLimitIsStartedAndALongerOneIsNot) {
  constexpr std::size_t kLimit = 131071;
  const std::string head = "quoll://compose?htmlBody=";
  add_entry();
  EXPECT_FALSE(open({head + std::string(kLimit + 1 - head.size(), 'x')}));
  EXPECT_EQ(
      only_line(),
      "openURLs it is too long: no more than 128 KiB can be handed over without a session bus; "
      "share a long text as a file");
  const std::string longest = head + std::string(kLimit - head.size(), 'x');
  ASSERT_TRUE(open({longest})) << log_->lines().back();
  EXPECT_TRUE(record().starts_with("uri " + longest + "\n"));
}

TEST_F(LauncherTest, AStartedProgramGetsTheTokensAndNothingElseOfOurs) {
  environment_["XDG_ACTIVATION_TOKEN"] = "token-1";
  environment_["DESKTOP_STARTUP_ID"] = "startup-1";
  add_entry();
  const std::string held_path = bus_.path("held");
  const posix::UniqueFd inheritable(::open(held_path.c_str(), O_CREAT | O_RDWR, 0600));
  ASSERT_TRUE(open({"quoll://compose?"}));
  EXPECT_EQ(record(),
            "uri quoll://compose?\nXDG_ACTIVATION_TOKEN token-1\nDESKTOP_STARTUP_ID startup-1\n"
            "fd /dev/null\nfd /dev/null\nfd /dev/null\n");
}

TEST_F(LauncherTest, AProgramStartedInTheBackgroundGetsNoToken) {
  environment_["XDG_ACTIVATION_TOKEN"] = "token-1";
  environment_["DESKTOP_STARTUP_ID"] = "startup-1";
  add_entry();
  ASSERT_TRUE(open({"quoll://compose?"}, kBackground));
  EXPECT_EQ(record(), "uri quoll://compose?\nfd /dev/null\nfd /dev/null\nfd /dev/null\n");
}

TEST_F(LauncherTest, SeveralThreadsAreServedOneAfterTheOther) {
  add_service("answer");
  const ScopedEnvironment environment(environment_);
  const platform::ScopedDesktop desktop({.log = log_});
  const auto launcher = gio::start_launcher({}, kLong);
  std::vector<std::thread> threads;
  std::atomic<int> opened = 0;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&] {
      const auto url = foundation::NSURL::URLWithString("quoll://compose?");
      opened += launcher->openURLs({url}, kName, kForeground) ? 1 : 0;
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(opened, 4);
}

/// Leaves this process room for so many more descriptors.
class FewDescriptors {
 public:
  explicit FewDescriptors(std::size_t left) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit few{64, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    for (int fd = 0; (fd = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) >= 0;) {
      taken_.emplace_back(fd);
    }
    taken_.resize(taken_.size() - left);
  }
  FewDescriptors(const FewDescriptors&) = delete;
  FewDescriptors& operator=(const FewDescriptors&) = delete;
  ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
  std::vector<posix::UniqueFd> taken_;
};

TEST_F(LauncherTest, TwoDescriptorsAreEnoughAndOneIsTold) {
  Process receiver(bus_double("answer"), environment_);
  ASSERT_EQ(receiver.read_line(), "ready");
  {
    const FewDescriptors few(2);
    EXPECT_TRUE(open({"quoll://compose"}));
  }
  EXPECT_TRUE(log_->lines().empty());
  {
    const FewDescriptors few(1);
    EXPECT_FALSE(open({"quoll://compose"}));
  }
  EXPECT_EQ(only_line(), "openURLs the launcher could not be started");
}

TEST_F(LauncherTest, TheLauncherEndsWithItsWorkspace) {
  const auto children = [] {
    std::string path = "/proc/self/task/" + std::to_string(gettid()) + "/children";
    return read_file(path);
  };
  const std::string before = children();
  {
    const ScopedEnvironment environment(environment_);
    const auto launcher = gio::start_launcher({}, kLong);
    EXPECT_NE(children(), before);
  }
  EXPECT_EQ(children(), before);
}

}  // namespace
}  // namespace quoll::test
