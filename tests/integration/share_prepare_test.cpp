// What the program does before it asks the extension: files are copied, however long that takes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <fstream>

#include "apps/share/progress_pipe.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "tests/integration/preparing.h"
#include "tests/support/tiff_picture.h"

namespace quoll::test {
namespace {

TEST_F(Preparing, AFileThatTakesLongerThanTheExtensionWaitsIsInTheDraft) {
  const std::string slow = home_.write("slow.txt", "slow");
  const std::string quick = home_.write("quick.txt", "quick");
  const int seconds = number_from("QUOLL_TEST_SLOW_SECONDS", 12);
  const Ended ended =
      run(slowly(std::to_string(seconds), {slow, quick, "data:,more"}), home_.environment());
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(ended.errors, "");
  EXPECT_EQ(names_of(attachments_of(ended.output)),
            (std::vector<std::string>{"slow.txt", "quick.txt", "data.txt"}));
  EXPECT_EQ(read_file(home_.staging() + "/slow.txt"), "slow");
  EXPECT_FALSE(home_.has_received_files());
}

TEST_F(Preparing, ASignalEndsItAndNothingStays) {
  const std::string file = home_.write("a.txt", "x");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Process share(slowly("60", {home_.write("before.txt", "x"), file}), home_.environment());
    wait_until_it_prepares(share);
    EXPECT_EQ(kill(share.id(), signal), 0);
    EXPECT_EQ(share.wait(), 128 + signal);
    EXPECT_EQ(share.read_output(), "");
    EXPECT_FALSE(home_.has_received_files()) << signal;
  }
  EXPECT_FALSE(fs::exists(home_.staging())) << "the extension was not asked";
}

TEST_F(Preparing, ASignalThatIsIgnoredStaysIgnored) {
  const std::string file = home_.write("a.txt", "x");
  auto command = slowly("1", {file});
  command.insert(command.begin(), {"sh", "-c", "trap '' HUP; exec \"$@\"", "sh"});
  Process share(command, home_.environment());
  wait_until_it_prepares(share);
  EXPECT_EQ(kill(share.id(), SIGHUP), 0);
  EXPECT_EQ(share.wait(), 0) << share.errors();
}

TEST_F(Preparing, AProgramThatHasStartedItSeesHowFarItIsAndCanEndIt) {
  posix::Pipe pipe = posix::make_pipe();
  std::vector<std::string> files;
  for (const char* name : {"a", "b", "c"}) {
    files.push_back(home_.write(name, std::string(3 << 20U, 'x')));
  }
  auto environment = home_.environment();
  environment["QUOLL_SLOW_PIECE"] = "300";
  ASSERT_EQ(dup2(pipe.writing.get(), 20), 20);
  files.insert(files.begin(), {"--progress", "20"});
  Process share(slowly("0", files), environment);
  close(20);
  pipe.writing.reset();
  std::string lines;
  bool ended = false;
  while (lines.find("99 601\n") == std::string::npos) {  // in the middle of the first file
    ASSERT_TRUE(posix::read_until(pipe.reading.get(), lines, lines.size() + 1, ended));
    ASSERT_FALSE(ended) << lines;
  }
  EXPECT_FALSE(share::has_turn(lines));
  pipe.reading.reset();
  EXPECT_EQ(share.wait(), 128 + SIGTERM);
  EXPECT_EQ(share.read_output(), "");
  EXPECT_FALSE(home_.has_received_files());
  EXPECT_FALSE(fs::exists(home_.staging()));
}

TEST_F(Preparing, SomebodyAtATerminalSeesHowFarItIs) {
  const std::string file = home_.write("a.txt", std::string(3'000'000, 'x'));
  const Ended ended =
      run({"script", "-qefc",
           "env LD_PRELOAD=" QUOLL_SLOW_COPY " QUOLL_SLOW=2 " QUOLL_SHARE " --print " + file,
           "/dev/null"},
          home_.environment());
  EXPECT_EQ(ended.status, 0);
  EXPECT_NE(ended.output.find("\r0 of 1 items are ready, 3 MB copied\033[K"), std::string::npos)
      << ended.output;
  EXPECT_NE(ended.output.find("\r\033[Kquoll://compose?"), std::string::npos)
      << "nothing of it stays";
}

TEST_F(Preparing, TooMuchForAMailIsSaidBeforeAnythingIsCopied) {
  auto command = slowly("60", {home_.write("a.bin", std::string(26'000'000, 'x'))});
  command.insert(command.begin(), {"sh", "-c", "exec \"$@\" 2>&1", "sh"});
  const auto begin = std::chrono::steady_clock::now();
  Process share(command, home_.environment());
  EXPECT_EQ(share.read_line(),
            "the files have 26 MB in all; mail servers often refuse more than 25 MB");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(50));
  EXPECT_FALSE(has_ended(share.id()));
}

TEST_F(Preparing, APictureThatTakesLongerThanTheExtensionWaitsIsInTheDraft) {
  const std::string picture = home_.write("picture", tiff_picture(3, 2));
  const std::string quick = home_.write("quick.txt", "quick");
  auto environment = home_.environment();
  environment["QUOLL_SLOW_HELPER"] = "11";
  auto command = slowly("0", {"-", quick});
  command.insert(command.begin(), {"sh", "-c", "exec \"$@\" <" + picture, "sh"});
  const Ended ended = run(command, environment);
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(names_of(attachments_of(ended.output)),
            (std::vector<std::string>{"image.png", "quick.txt"}));
  EXPECT_FALSE(home_.has_received_files());
}

TEST_F(Preparing, ASignalEndsTheImageHelperToo) {
  const std::string picture = home_.write("picture", tiff_picture(3, 2));
  auto environment = home_.environment();
  environment["QUOLL_SLOW_HELPER"] = "60";
  auto command = slowly("0", {"data:,text", "-"});
  command.insert(command.begin(), {"sh", "-c", "exec \"$@\" <" + picture, "sh"});
  Process share(command, environment);
  wait_until_it_prepares(share);
  EXPECT_EQ(kill(share.id(), SIGINT), 0);
  EXPECT_EQ(share.wait(), 128 + SIGINT);
  EXPECT_FALSE(home_.has_received_files());
}

class Prepared : public Preparing {
 protected:
  void SetUp() override {}
};

TEST_F(Prepared, AShareThatWaitsForItsTurnHasItsFilesReady) {
  ASSERT_EQ(home_.print({"https://h/"}).status, 0) << "the container is there now";
  const posix::UniqueFd turn(
      open((home_.container() + "/.locks/turn").c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_EQ(flock(turn.get(), LOCK_EX), 0);
  const std::string file = home_.write("a.txt", "as it was picked");
  Process share({QUOLL_SHARE, "--print", file}, home_.environment());
  ASSERT_TRUE(waits_for_lock(share.id()));
  fs::remove(file);
  ASSERT_EQ(flock(turn.get(), LOCK_UN), 0);
  EXPECT_EQ(share.wait(), 0) << share.errors();
  EXPECT_EQ(read_file(home_.staging() + "/a.txt"), "as it was picked");
  EXPECT_FALSE(home_.has_received_files());
}

TEST_F(Prepared, ASignalEndsTheWaitForTheTurnAndNothingStays) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "this sanitizer keeps a signal back while a lock is waited for";
#endif
  ASSERT_EQ(home_.print({"https://h/"}).status, 0);
  const posix::UniqueFd turn(
      open((home_.container() + "/.locks/turn").c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_EQ(flock(turn.get(), LOCK_EX), 0);
  Process share({QUOLL_SHARE, "--print", home_.write("a.txt", "x")}, home_.environment());
  ASSERT_TRUE(waits_for_lock(share.id()));
  EXPECT_FALSE(fs::is_empty(incoming()));
  EXPECT_EQ(kill(share.id(), SIGINT), 0);
  EXPECT_EQ(share.wait(), 128 + SIGINT);
  EXPECT_FALSE(home_.has_received_files());
}

TEST_F(Prepared, ASignalEndsTheWaitForAPipeAndNothingStays) {
  const std::string name = home_.path("pipe");
  ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
  const posix::UniqueFd pipe(open(name.c_str(), O_RDWR | O_CLOEXEC));
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    Process share({"sh", "-c", "exec \"$0\" --print data:,first - <\"$1\"", QUOLL_SHARE, name},
                  home_.environment());
    ASSERT_TRUE(posix::write_all(pipe.get(), std::string(3 << 20U, 'x')));
    wait_until_it_prepares(share);
    EXPECT_TRUE(home_.has_received_files());
    EXPECT_EQ(kill(share.id(), signal), 0);
    EXPECT_EQ(share.wait(), 128 + signal);
    EXPECT_FALSE(home_.has_received_files());
  }
}

TEST_F(Prepared, APictureIsNotHeldInMemory) {
  constexpr std::size_t kMebibyte = std::size_t{1} << 20;
  const std::string picture = home_.path("picture");
  std::ofstream(picture, std::ios::binary) << tiff_picture(6000, 5000);
  const auto command = ShareHome::command({"--print", "-"}, picture);
  const pid_t program = fork();
  if (program == 0) {
    const ScopedEnvironment environment(home_.environment());
    std::vector<char*> words;
    for (const std::string& word : command) {
      words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    execvp(words[0], words.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};  // of the helper as well, if that is more
  ASSERT_EQ(wait4(program, &status, 0, &usage), program);
  EXPECT_EQ(status, 0);
  const std::string png = home_.staging() + "/image.png";
  ASSERT_TRUE(fs::exists(png));
  const auto most = std::max(fs::file_size(picture), fs::file_size(png));
  if (!sandbox::kSanitizerBuild) {
    EXPECT_LT(static_cast<std::size_t>(usage.ru_maxrss) * 1024, most * 13 / 10 + 32 * kMebibyte);
  }
  struct stat file {};
  ASSERT_EQ(stat(png.c_str(), &file), 0);
  const mode_t mask = umask(0);
  umask(mask);
  EXPECT_EQ(file.st_mode & 07777U, 0666U & ~mask) << "as one that the extension writes";
}

TEST_F(Prepared, ADamagedPictureIsLeftOutForTheSameReasonAsEver) {
  const std::string picture = home_.write("picture", tiff_picture(3, 2).substr(0, 20));
  const Ended ended = home_.print({"-", "https://h/"}, picture);
  EXPECT_EQ(ended.status, 3);
  EXPECT_TRUE(ended.errors.starts_with("left out: standard input: ")) << ended.errors;
  EXPECT_FALSE(home_.has_received_files());
}

TEST_F(Prepared, ACopyKeepsItsModeAndItsTimes) {
  const std::string file = home_.write("a.txt", "x");
  ASSERT_EQ(chmod(file.c_str(), 0640), 0);
  const timespec times[2] = {{1'000'000'000, 5}, {1'100'000'000, 7}};
  ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
  ASSERT_EQ(home_.print({file}).status, 0);
  struct stat status {};
  ASSERT_EQ(stat((home_.staging() + "/a.txt").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0640U);
  EXPECT_EQ(status.st_mtim.tv_sec, 1'100'000'000);
  EXPECT_EQ(status.st_mtim.tv_nsec, 7);
  EXPECT_EQ(status.st_nlink, 1U);
}

TEST_F(Prepared, AFileOfTheShareBeforeCanBeSharedAgain) {
  ASSERT_EQ(home_.print({home_.write("a.txt", "x")}).status, 0);
  const Ended again = home_.print({home_.staging() + "/a.txt"});
  EXPECT_EQ(again.status, 0) << again.errors;
  EXPECT_EQ(read_file(home_.staging() + "/a.txt"), "x");
}

}  // namespace
}  // namespace quoll::test
