#include "quoll/linux/posix/subprocess.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "quoll/linux/posix/descriptor_io.h"
#include "tests/contract/child_process.h"

namespace quoll::posix {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

Command shell(const std::string& script) {
  return {.words = {"sh", "-c", script}};
}

/// Whether a process is there; one that has ended and waits for its parent is not.
bool is_there(pid_t process) {
  return ::kill(process, 0) == 0 && wait_for_end(process, Clock::now()) != 0;
}

TEST(Subprocess, TellsHowItEnded) {
  Subprocess well(shell("exit 0"));
  EXPECT_EQ(well.end_by(Clock::now() + 60s), 0);
  EXPECT_TRUE(well.ended_well());
  Subprocess badly(shell("echo 'the reason\nmore' >&2; exit 3"));
  EXPECT_EQ(badly.end_by(Clock::now() + 60s), 0);
  EXPECT_FALSE(badly.ended_well());
  ASSERT_TRUE(badly.status());
  EXPECT_EQ(WEXITSTATUS(*badly.status()), 3);
  EXPECT_EQ(badly.complaint(), "the reason");
  EXPECT_EQ(Subprocess({.words = {"/nowhere/program"}}).start_error(), ENOENT);
}

TEST(Subprocess, IsEndedInTime) {
  Subprocess slow(shell("while :; do echo much >&2; done"));
  EXPECT_EQ(slow.end_by(Clock::now() + 50ms), ETIMEDOUT);
  ASSERT_TRUE(slow.status());
  EXPECT_EQ(WTERMSIG(*slow.status()), SIGKILL);
}

TEST(Subprocess, DoesNotOutliveItsObject) {
  Pipe output = make_pipe();
  std::string told;
  {
    // The group is the shell and the process that it starts.
    Subprocess both({.words = {"sh", "-c", "sleep 1000 & printf %08d $!; wait"},
                     .output = output.writing.get(),
                     .leads_group = true});
    output.writing.reset();
    bool ended = false;
    ASSERT_TRUE(read_until(output.reading.get(), told, 8, ended, 60s));
    EXPECT_TRUE(is_there(std::stoi(told)));
  }
  bool ended = false;
  EXPECT_TRUE(read_until(output.reading.get(), told, 100, ended, 60s));
  EXPECT_TRUE(ended) << "nobody holds the pipe";
}

TEST(Subprocess, HasThreeStreamsAndNoSignalOfTheCaller) {
  EXPECT_EQ(test::in_child_process([]() -> std::string {
              ::signal(SIGPIPE, SIG_IGN);
              Pipe output = make_pipe();
              const UniqueFd open_one(::dup(output.reading.get()));  // not closed on exec
              Subprocess program({.words = {"sh", "-c",
                                            "ls /proc/self/fd | wc -l; "
                                            "grep -E 'SigIgn:.*0{7}$' /proc/self/status"},
                                  .output = output.writing.get()});
              output.writing.reset();
              std::string told;
              bool ended = false;
              if (!read_until(output.reading.get(), told, 1000, ended, 60s)) {
                return "nothing was told";
              }
              program.end_by(Clock::now() + 60s);
              // The fourth is the list itself. Two of the last signals belong to the C library.
              return told.starts_with("4\nSigIgn") ? "" : told;
            }),
            "");
}

TEST(Pipe, IsAboveTheStandardStreams) {
  EXPECT_EQ(test::in_child_process([]() -> std::string {
              ::close(STDIN_FILENO);
              const Pipe pipe = make_pipe();
              return pipe && pipe.reading.get() > STDERR_FILENO &&
                             pipe.writing.get() > STDERR_FILENO && ::close(STDIN_FILENO) != 0
                         ? ""
                         : "it takes the place of a standard stream";
            }),
            "");
}

TEST(WaitForEnd, SaysWhyItCannot) {
  EXPECT_EQ(wait_for_end(::getppid(), Clock::now()), ETIMEDOUT);
  EXPECT_EQ(wait_for_end(0, Clock::now()), EINVAL);
  EXPECT_FALSE(reap(::getppid())) << "no child of ours";
}

TEST(RunProgram, AProgramThatGoesOnSilentlyIsEnded) {
  const ProgramAnswer answer = run_program({"sh", "-c", "echo said; exec >&-; sleep 1000"}, 100,
                                           1000s, Clock::now() + 200ms);
  EXPECT_EQ(answer.end, ProgramAnswer::End::kSilent);
  EXPECT_EQ(answer.output, "said\n");
}

TEST(RunProgram, AProgramWithoutAnOutputIsEndedWhenItIsSilentForTooLong) {
  const ProgramAnswer answer = run_program({"sh", "-c", "echo said; exec >&-; sleep 1000"}, 100,
                                           200ms, Clock::now() + 1000s);
  EXPECT_EQ(answer.end, ProgramAnswer::End::kSilent);
}

}  // namespace
}  // namespace quoll::posix
