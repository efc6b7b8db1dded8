#include "apps/share/progress_pipe.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include "apps/share/interruption.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {
namespace {

TEST(ProgressPipe, ALineForEachStep) {
  posix::Pipe pipe = posix::make_pipe();
  const Progress progress = progress_to(pipe.writing.get());
  progress(0, 7);
  progress(3, 7);
  pipe.writing.reset();
  std::string lines;
  bool ended = false;
  ASSERT_TRUE(posix::read_until(pipe.reading.get(), lines, 1000, ended));
  EXPECT_EQ(lines, "0 7\n3 7\n");
}

TEST(ProgressPipe, AReaderThatDoesNotReadKeepsNobodyWaiting) {
  const posix::Pipe pipe = posix::make_pipe();
  const Progress progress = progress_to(pipe.writing.get());
  for (int time = 0; time < 100'000; ++time) {
    progress(1, 2);
  }
}

TEST(ProgressPipe, TheTurnComesWithTheSecondHalf) {
  struct Row {
    const char* lines;
    bool has_turn;
  };
  for (const Row& row : std::vector<Row>{{"", false},
                                         {"1 2", false},
                                         {"1 2\n", true},
                                         {"0 2\n1 2\n", true},
                                         {"1 2\n0 2\n", false},
                                         {"1 3\n", false},
                                         {"2 3\n2", true},
                                         {"100 201\n", false},
                                         {"0 0\n", true},
                                         {"\n", false},
                                         {"2\n", false},
                                         {"2 \n", false},
                                         {"two 2\n", false},
                                         {"-1 2\n", false}}) {
    EXPECT_EQ(has_turn(row.lines), row.has_turn) << row.lines;
  }
}

TEST(Interruption, ComesWithTheEndOfTheStarter) {
  EXPECT_FALSE(Interruption::has_starter());
  posix::Pipe pipe = posix::make_pipe();
  int ends[2] = {-1, -1};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  const posix::UniqueFd socket(ends[0]);
  posix::UniqueFd other(ends[1]);
  {
    const Interruption interruption(pipe.writing.get());
    EXPECT_TRUE(Interruption::has_starter());
    EXPECT_FALSE(Interruption::has_come());
    pipe.reading.reset();
    EXPECT_TRUE(Interruption::has_come());
  }
  EXPECT_FALSE(Interruption::has_come());
  const Interruption interruption(socket.get());
  ASSERT_EQ(shutdown(other.get(), SHUT_WR), 0);
  EXPECT_FALSE(Interruption::has_come()) << "it says no more, but listens";
  other.reset();
  EXPECT_TRUE(Interruption::has_come());
}

}  // namespace
}  // namespace quoll::share
