// A sample of what scripts/crash does at every call: shares that are harmed where they change
// something on the disk.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <map>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/crash/series.h"

namespace quoll::crash {
namespace {

// A sanitizer makes a share so much slower that a part of the sample has to do.
constexpr std::size_t kEvery = sandbox::kSanitizerBuild ? 4 : 1;

/// Shares that are killed, in one of the worlds; each test looks for one kind of harm.
class Killed : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (const std::string why = why_not_stepped(); !why.empty()) {
      GTEST_SKIP() << why;
    }
  }

  /// How often this was found. The sample is taken once for all tests.
  static long found(About about) {
    static std::map<std::string, SeriesResult> results;
    const auto [at, is_new] = results.try_emplace(GetParam());
    if (is_new) {
      const auto* const series =
          std::find_if(std::begin(kSeries), std::end(kSeries),
                       [](const Series& one) { return std::string(one.name) == GetParam(); });
      at->second =
          run_series(*series, {.every = kEvery, .seconds = 0, .only_changes = true, .unharmed = 2});
    }
    EXPECT_GT(at->second.trials, 5);
    EXPECT_EQ(at->second.stuck, 0) << "a process of the harness could not go on";
    EXPECT_EQ(at->second.found.at(static_cast<std::size_t>(About::kHang)), 0);
    return at->second.found.at(static_cast<std::size_t>(about));
  }
};

TEST_P(Killed, NoFileIsHalfUnderItsName) {
  EXPECT_EQ(found(About::kHalfFile), 0);
}

TEST_P(Killed, NothingStaysThatTheNextShareDoesNotRemove) {
  EXPECT_EQ(found(About::kLeftOver), 0);
}

TEST_P(Killed, NoLockStays) {
  EXPECT_EQ(found(About::kLock), 0);
}

TEST_P(Killed, NothingElseIsTouched) {
  EXPECT_EQ(found(About::kTouched), 0);
}

TEST_P(Killed, TheNextShareWorks) {
  EXPECT_EQ(found(About::kNextShare), 0);
}

TEST_P(Killed, WhoIsLeftTellsTheTruth) {
  EXPECT_EQ(found(About::kUntruth), 0);
  EXPECT_EQ(found(About::kDeath), 0);
}

/// What a process calls itself, cut short.
std::string name_of(std::uint64_t process) {
  return test::read_file("/proc/" + std::to_string(process) + "/comm");
}

/// Does something at one call: the one of a kind that is the `turn`-th, from 1. With a name, only
/// calls count whose first argument is a process whose name begins so.
class AtOne final : public Steps {
 public:
  AtOne(long number, int turn, const Step& step, std::string name = "")
      : number_(number), turn_(turn), step_(step), name_(std::move(name)) {}

  Step at(const Call& call) override {
    const bool is_meant =
        call.number == number_ && (name_.empty() || name_of(call.arguments[0]).starts_with(name_));
    return is_meant && --turn_ == 0 ? step_ : Step{};
  }
  [[nodiscard]] bool is_done() const override { return turn_ <= 0; }

 private:
  long number_;
  int turn_;
  Step step_;
  std::string name_;
};

TEST(KilledAlone, ItsReceivedFilesAreSweptByTheNextShare) {
  if (const std::string why = why_not_stepped(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  struct Row {
    const char* reason;
    long call;
    int turn;
  };
  const std::vector<Row> rows{
      {"before it locks their folder", SYS_flock, 1},
      {"before it makes the file", SYS_mkdirat, 2},
      {"while it copies", SYS_copy_file_range, 1},
  };
  Scene scene;
  for (const Row& row : rows) {
    scene.prepare(true);
    AtOne kill(row.call, row.turn, {.kind = Step::Kind::kKillOne});
    static_cast<void>(run_stepped(scene.command(Which::kFirst), scene.environment(), kill, 0));
    EXPECT_TRUE(kill.is_done()) << row.reason;
    EXPECT_EQ(names_in(scene.incoming()).size(), 1U) << row.reason;
    EXPECT_EQ(test::run(scene.command(Which::kNext), scene.environment()).status, 0) << row.reason;
    EXPECT_EQ(names_in(scene.incoming()), std::vector<std::string>()) << row.reason;
  }
}

TEST(Failed, WhatWentWrongIsTold) {
  if (const std::string why = why_not_stepped(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  struct Row {
    const char* reason;
    long call;
    int error;
    int status;
    std::string told;
    std::string process = "";
  };
  Scene scene;
  const std::vector<Row> rows{
      {"the folder helper cannot be watched", SYS_pidfd_open, EMFILE, 3,
       "left out: " + scene.shared_folder(Which::kFirst) +
           ": it cannot be packed: the helper cannot be watched: too many open files\n",
       "quoll-folder"},
      {"the image helper cannot be watched when a picture is prepared: the extension starts "
       "another",
       SYS_pidfd_open, EMFILE, 0, "", "quoll-image"},
      {"no socket to the launcher", SYS_socketpair, EMFILE, 1,
       "not opened: the launcher could not be started; quollctl doctor tells more\n"},
      {"no copies inside the file system", SYS_copy_file_range, EIO, 0, ""},
      {"no folder for bytes without a file", SYS_mkdirat, EIO, 3,
       "left out: data:,first: it cannot be kept in a temporary file: input/output error\n"},
      {"no staging lock, which is for the sake of others", SYS_flock, ENOLCK, 0, ""},
  };
  static_cast<void>(scene.learn());
  for (const Row& row : rows) {
    scene.prepare(false);
    AtOne fault(row.call, 1, {.kind = Step::Kind::kFail, .error = row.error}, row.process);
    const SteppedEnd end = run_stepped(scene.command(Which::kFirst), scene.environment(), fault, 0);
    EXPECT_TRUE(fault.is_done()) << row.reason;
    EXPECT_EQ(end.status, row.status) << row.reason;
    EXPECT_EQ(end.errors, std::string(Scene::kNote) + "\n" + row.told) << row.reason;
  }
}

/// Fails every call of a kind.
class EveryOne final : public Steps {
 public:
  EveryOne(long number, int error) : number_(number), error_(error) {}

  Step at(const Call& call) override {
    return call.number == number_ ? Step{.kind = Step::Kind::kFail, .error = error_} : Step{};
  }
  [[nodiscard]] bool is_done() const override { return false; }

 private:
  long number_;
  int error_;
};

TEST(Failed, AHelperThatCanNeverBeWatchedLeavesOutWhatItWasFor) {
  if (const std::string why = why_not_stepped(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  Scene scene;
  scene.prepare(false);
  EveryOne fault(SYS_pidfd_open, EMFILE);
  const SteppedEnd end = run_stepped(scene.command(Which::kFirst), scene.environment(), fault, 60);
  EXPECT_EQ(end.status, 3);
  EXPECT_EQ(
      end.errors,
      std::string(Scene::kNote) + "\nleft out: " + scene.shared_folder(Which::kFirst) +
          ": it cannot be packed: the helper cannot be watched: too many open files\n"
          "left out: data:image/gif;base64,R0lGODlhAQABAIAAAA...: image: the helper cannot be "
          "watched: Too many open files\n");
}

/// The folder helper learns that its output was lost when it closes it.
class LostAtClose final : public Steps {
 public:
  Step at(const Call& call) override {
    if (call.number != SYS_close || call.arguments[0] != STDOUT_FILENO ||
        !name_of(static_cast<std::uint64_t>(call.process)).starts_with("quoll-folder")) {
      return {};
    }
    is_done_ = true;
    return {.kind = Step::Kind::kFailAfterwards, .error = EIO};
  }
  [[nodiscard]] bool is_done() const override { return is_done_; }

 private:
  bool is_done_ = false;
};

TEST(Failed, AFolderThatIsLostAtTheEndOfItsWritingIsLeftOut) {
  if (const std::string why = why_not_stepped(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  Scene scene;
  scene.prepare(false);
  LostAtClose fault;
  const SteppedEnd end = run_stepped(scene.command(Which::kFirst), scene.environment(), fault, 60);
  EXPECT_TRUE(fault.is_done()) << "it closes nothing";
  EXPECT_EQ(end.status, 3);
  EXPECT_EQ(end.errors, std::string(Scene::kNote) +
                            "\nleft out: " + scene.shared_folder(Which::kFirst) +
                            ": it cannot be packed: input/output error\n");
}

/// Lets no process make a thread; processes are made as always.
class NoThreads final : public Steps {
 public:
  Step at(const Call& call) override {
    const bool is_refused = (call.number == SYS_clone && (call.arguments[0] & CLONE_THREAD) != 0) ||
                            (call.number == SYS_clone3 && (flags_of(call) & CLONE_THREAD) != 0);
    refused_ += is_refused ? 1 : 0;
    return is_refused ? Step{.kind = Step::Kind::kFail, .error = EAGAIN} : Step{};
  }
  [[nodiscard]] bool is_done() const override { return false; }
  [[nodiscard]] int refused() const { return refused_; }

 private:
  /// The first words of the structure that the call is given.
  static std::uint64_t flags_of(const Call& call) {
    std::uint64_t flags = 0;
    const iovec here{&flags, sizeof flags};
    const iovec there{reinterpret_cast<void*>(call.arguments[0]), sizeof flags};
    return process_vm_readv(call.process, &here, 1, &there, 1, 0) == sizeof flags ? flags : 0;
  }

  int refused_ = 0;
};

TEST(Failed, WithoutAnyThreadAShareEndsWithAReason) {
  if (const std::string why = why_not_stepped(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  const auto share = make_share();
  share->prepare(false);
  NoThreads faults;
  Result result;
  const SteppedEnd end = run_stepped(share->command(), share->environment(), faults, 60);
  EXPECT_GT(faults.refused(), 0);
  EXPECT_FALSE(end.is_hung);
  EXPECT_EQ(end.status, 1) << end.errors;
  EXPECT_NE(end.errors.find("not opened: "), std::string::npos) << end.errors;
  share->check({}, {.end = end}, 60, result);
  for (const Finding& finding : result.findings) {
    ADD_FAILURE() << words_of(finding.about) << ": " << finding.text;
  }
}

TEST(Failed, WithoutAnyThreadTheReceiverKeepsTheDraft) {
  if (const std::string why = why_not_stepped(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  const auto receiver = make_receiver();
  receiver->prepare(false);
  NoThreads faults;
  Result result;
  const SteppedEnd end = run_stepped(receiver->command(), receiver->environment(), faults, 60);
  EXPECT_GT(faults.refused(), 0);
  EXPECT_FALSE(end.is_hung);
  EXPECT_EQ(end.status, 1) << end.errors;
  EXPECT_NE(end.errors, "");
  Trial trial;
  trial.harm = Harm::kFault;
  receiver->check(trial, {.end = end}, 60, result);
  for (const Finding& finding : result.findings) {
    ADD_FAILURE() << words_of(finding.about) << ": " << finding.text;
  }
}

TEST(Failed, AFileThatCannotBeLinkedIsCopiedFromItsDescriptor) {
  if (const std::string why = why_not_stepped(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  const auto receiver = make_receiver();
  // No link between two file systems, of this user, any more, or since the name has gone.
  for (const int error : {EXDEV, EPERM, EMLINK, ENOENT}) {
    receiver->prepare(false);
    AtOne fault(SYS_linkat, 1, {.kind = Step::Kind::kFail, .error = error});
    Result result;
    const SteppedEnd end = run_stepped(receiver->command(), receiver->environment(), fault, 60);
    EXPECT_TRUE(fault.is_done());
    EXPECT_EQ(end.status, 0) << error << ": " << end.errors;
    receiver->check({}, {.end = end}, 60, result);
    EXPECT_EQ(result.findings.size(), 0U) << error;
  }
}

TEST(Failed, AServiceThatCannotPromiseADraftHasNone) {
  if (const std::string why = why_not_stepped(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  const auto service = make_receiver_service();
  service->prepare(false);
  AtOne fault(SYS_renameat2, 1, {.kind = Step::Kind::kFail, .error = EIO});
  Result result;
  const SteppedEnd end = run_stepped(service->command(), service->environment(), fault, 60);
  EXPECT_TRUE(fault.is_done()) << "it was not called";
  EXPECT_EQ(end.status, 0) << end.errors;
  Trial trial;
  trial.harm = Harm::kFault;
  service->check(trial, {.end = end}, 60, result);
  for (const Finding& finding : result.findings) {
    ADD_FAILURE() << words_of(finding.about) << ": " << finding.text;
  }
}

// The lane of the process that writes: the server is process 1.
class WriterWrites final : public Steps {
 public:
  explicit WriterWrites(int turn) : turn_(turn) {}
  Step at(const Call& call) override {
    const bool is_meant = call.number == SYS_write && call.lane.process == 2 && --turn_ == 0;
    return is_meant ? Step{.kind = Step::Kind::kFail, .error = ENOSPC} : Step{};
  }
  [[nodiscard]] bool is_done() const override { return turn_ <= 0; }

 private:
  int turn_;
};

TEST(Failed, ADraftIsNeverWrittenInPart) {
  if (const std::string why = why_not_stepped(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  const auto receiver = make_receiver();
  int turn = 1;
  for (bool was_met = true; was_met; ++turn) {
    receiver->prepare(false);
    WriterWrites fault(turn);
    Result result;
    const SteppedEnd end = run_stepped(receiver->command(), receiver->environment(), fault, 60);
    was_met = fault.is_done();
    receiver->check({}, {.end = end}, 60, result);
    for (const Finding& finding : result.findings) {
      ADD_FAILURE() << turn << ": " << words_of(finding.about) << ": " << finding.text;
    }
  }
  EXPECT_GT(turn, 5);
}

/// The receiver is killed where it changes something on the disk.
class ReceiverKilled : public testing::TestWithParam<const char*> {};

TEST_P(ReceiverKilled, WhatWasPromisedIsThereWholeAndOnce) {
  if (const std::string why = why_not_stepped(); !why.empty()) {
    GTEST_SKIP() << why;
  }
  const auto* const series =
      std::find_if(std::begin(kSeries), std::end(kSeries),
                   [](const Series& one) { return std::string(one.name) == GetParam(); });
  const SeriesResult result =
      run_series(*series, {.every = kEvery, .seconds = 0, .only_changes = true, .unharmed = 2});
  EXPECT_GT(result.trials, 5);
  EXPECT_EQ(result.stuck, 0);
  EXPECT_EQ(result.faulty, 0);
}

INSTANTIATE_TEST_SUITE_P(All, ReceiverKilled,
                         testing::Values("receiver-kill-all", "receiver-service-kill-all"));
INSTANTIATE_TEST_SUITE_P(All, Killed, testing::Values("kill-all", "kill-all-first"));

}  // namespace
}  // namespace quoll::crash
