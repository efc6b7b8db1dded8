// Shares of the service that take their time: several at once, too long, cancelled, and the end.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <list>
#include <thread>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/integration/share_home.h"
#include "tests/integration/share_service.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

TEST_F(ShareService, AShareIsOneProcessAndItsLauncher) {
  posix::UniqueFd lock = held_staging_lock();
  EXPECT_EQ(open({"https://example.org/", "data:,a%20file"}), "");
  Request request;
  Call call(bus(), request.text("text", "words").bytes("a.txt", "", "the content"));
  std::vector<pid_t> shares;
  while ((shares = children_of(service())).size() < 2) {
    std::this_thread::sleep_for(10ms);
  }
  for (const pid_t share : shares) {
    while (!has_open(share, "/.locks/turn")) {
      ASSERT_FALSE(has_ended(share));
      std::this_thread::sleep_for(1ms);
    }
    const std::vector<pid_t> launcher = children_of(share);
    ASSERT_EQ(launcher.size(), 1U);
    EXPECT_TRUE(children_of(launcher[0]).empty());
  }
  EXPECT_EQ(children_of(service()), shares);
  lock.reset();
  EXPECT_EQ(call.wait().code, 1) << "there is no receiver";
}

TEST_F(ShareService, ASlowDescriptorDoesNotStopTheNextCall) {
  install_receiver();
  int ends[2] = {-1, -1};
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  posix::UniqueFd writing(ends[1]);
  Request slow;
  Call first(bus(), slow.descriptor("slow.txt", ends[0]));
  Request quick;
  const Answer second = share(quick.text("text", "quick"));
  EXPECT_EQ(second.code, 0) << second.told;
  ASSERT_EQ(::write(writing.get(), "slow", 4), 4);
  writing.reset();
  EXPECT_EQ(first.wait().code, 0) << "it was not given up";
}

TEST_F(ShareService, SixteenSharesAreUnderWayAtMost) {
  posix::UniqueFd lock = held_staging_lock();
  std::list<Call> calls;
  std::list<Request> requests;
  for (int number = 0; number < 16; ++number) {
    calls.emplace_back(bus(), requests.emplace_back().text("text", std::to_string(number)));
  }
  Request request;
  Call beyond(bus(), request.text("text", "words"));
  EXPECT_EQ(open({"https://example.org/"}), "too many shares are under way");
  lock.reset();
  EXPECT_EQ(beyond.wait().told, "too many shares are under way");
  for (Call& call : calls) {
    EXPECT_EQ(call.wait().code, 1) << "there is no receiver";
  }
}

TEST_F(ShareService, ACallerThatGoesAwayEndsItsShareAndNoOther) {
  install_receiver();
  posix::UniqueFd lock = held_staging_lock();
  Request request;
  g_dbus_connection_call(bus(), kName, kPath, "it.vorlent.quoll2.Share1", "Share",
                         request.uris({write("a.txt", "the words")}).parameters(), nullptr,
                         G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, nullptr, nullptr);
  EXPECT_EQ(open({"https://example.org/"}), "") << "the call before it has begun";
  const pid_t id = service();
  EXPECT_TRUE(g_dbus_connection_close_sync(bus(), nullptr, nullptr));
  while (children_of(id).size() > 1) {
    std::this_thread::sleep_for(10ms);
  }
  lock.reset();
  const std::string draft = drafts(1);
  EXPECT_NE(draft.find("https://example.org/"), std::string::npos) << draft;
  EXPECT_TRUE(is_nothing_prepared());
}

TEST_F(ShareService, APersonCanCancelAShareThatTakesLong) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE, "press"}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  posix::UniqueFd lock = held_staging_lock();
  EXPECT_EQ(open({"file://" + write("a.txt", "the words")}), "");
  EXPECT_EQ(desktop.read_line(),
            "What you share is being prepared|It takes a while; the draft opens by itself.");
  EXPECT_EQ(desktop.read_line(), "[Cancel]");
  const pid_t id = service();
  while (!children_of(id).empty()) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_TRUE(is_nothing_prepared());
  lock.reset();
  EXPECT_EQ(open({"/nowhere"}), "");
  EXPECT_EQ(desktop.read_line(), "Nothing was shared|Left out: /nowhere: no such file")
      << "nothing was shown of the one that was cancelled";
  EXPECT_TRUE(home_.drafts().empty());
}

TEST_F(ShareService, TheNotificationGoesWhenTheTurnComes) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE, "later:" + home_.bus.path("pressed")},
                  home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  posix::UniqueFd lock = held_staging_lock();
  EXPECT_EQ(open({"https://example.org/"}), "");
  EXPECT_TRUE(desktop.read_line().starts_with("What you share is being prepared|"));
  EXPECT_EQ(desktop.read_line(), "[Cancel]");
  lock.reset();
  EXPECT_EQ(desktop.read_line(), "closed 1");
  drafts(1);
}

class HurriedShareService : public ShareService {
 protected:
  HurriedShareService() : ShareService("0.2 --time 1") {}
};

TEST_F(HurriedShareService, AShareThatTakesTooLongIsEndedAndSaid) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  posix::UniqueFd lock = held_staging_lock();
  Request request;
  const Answer answer = share(request.text("text", "asked by a program"));
  EXPECT_EQ(answer.code, 1);
  EXPECT_EQ(answer.told, "not opened: nothing moved on for 1 s; share less at once");
  EXPECT_EQ(open({"https://example.org/asked-by-a-person"}), "");
  EXPECT_EQ(desktop.read_line(), "Nothing was shared|Nothing moved on for 1 s; share less at once");
  lock.reset();
  EXPECT_EQ(run({QUOLL_SHARE, "--text", "words"}, home_.bus.environment()).status, 0);
  const std::string draft = drafts(1);
  EXPECT_EQ(draft.find("asked"), std::string::npos) << draft;
}

TEST_F(HurriedShareService, AShareThatMovesOnMayTakeAsLongAsItNeeds) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer has to be loaded first";
  }
  home_.bus.add_service(kName, "/usr/bin/env LD_PRELOAD=" QUOLL_SLOW_COPY " QUOLL_SLOW_PIECE=50 " +
                                   std::string(QUOLL_SHARE_SERVICE) + " --idle 0.2 --time 1");
  install_receiver();
  std::vector<std::string> files;
  for (int number = 0; number < 50; ++number) {
    files.push_back(write(std::to_string(number), "x"));
  }
  Request request;
  const auto begin = std::chrono::steady_clock::now();
  const Answer answer = share(request.uris(files));
  EXPECT_EQ(answer.code, 0) << answer.told;
  EXPECT_GT(std::chrono::steady_clock::now() - begin, 2s);
}

/// Sets how many descriptors this process and those that it starts may have.
class FewDescriptors {
 protected:
  FewDescriptors() {
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &before_), 0);
    const rlimit few{200, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  }
  ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

class ShareServiceWithFewDescriptors : FewDescriptors, public ShareService {};

// One that calls select() with more of them than it expects would break.
TEST_F(ShareServiceWithFewDescriptors, TheMailApplicationIsGivenAsManyAsItWouldBe) {
  const std::string record = home_.bus.path("record");
  home_.bus.add_entry(
      kReceiver, "[Desktop Entry]\nType=Application\nName=Recorder\nExec=sh -c \"ulimit -Sn >" +
                     record + ".new; mv " + record + ".new " + record + "\" %u\n");
  Request request;
  const Answer answer = share(request.text("text", "words"));
  EXPECT_EQ(answer.code, 0) << answer.told;
  while (!std::filesystem::exists(record)) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_EQ(read_file(record), "200\n");
}

class ShortLivedShareService : public ShareService {
 protected:
  ShortLivedShareService() : ShareService("0.001") {}
};

TEST_F(ShortLivedShareService, NothingIsLostWhileTheServiceEnds) {
  install_receiver();
  for (int number = 0; number < 10; ++number) {
    Request request;
    const Answer answer = share(request.text("text", std::to_string(number)));
    EXPECT_EQ(answer.code, 0) << answer.told;
    std::this_thread::sleep_for(std::chrono::microseconds(number * 300));
  }
}

}  // namespace
}  // namespace quoll::test
