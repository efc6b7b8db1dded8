#include "apps/compose/writer_server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "apps/compose/writer_result.h"
#include "apps/sandbox/path_rules.h"
#include "apps/sandbox/sanitizer_build.h"
#include "quoll/foundation/percent.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "tests/compose/taken_folder.h"

namespace quoll::compose {
namespace {

using test::TakenFolder;

void say(int output, const std::string& text) {
  (void)!posix::write_all(output, text);
}

/// Writes the process's number, and goes on for ever.
void hang(int /*taken_folder*/, int output) {
  say(output, std::to_string(getpid()) + "\n");
  for (;;) {
    std::this_thread::yield();
  }
}

struct Family {
  pid_t child = 0;
  pid_t server = 0;
};

/// Waits until the child has said who it is.
Family family_in(const TakenFolder& folder) {
  Family family;
  for (int tries = 0; tries < 2000 && !folder.written().ends_with('\n'); ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  const std::string text = folder.written();
  if (!text.ends_with('\n')) {
    ADD_FAILURE() << "no child has begun";
    return {.child = getpid() + 1'000'000, .server = getpid() + 1'000'000};
  }
  family.child = std::stoi(text);
  std::ifstream status("/proc/" + text.substr(0, text.size() - 1) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("PPid:")) {
      family.server = std::stoi(line.substr(5));
    }
  }
  EXPECT_GT(family.server, 1);
  return family;
}

/// True once the process is gone, or dead and not yet reaped by whoever has to.
bool ends(pid_t process) {
  for (int tries = 0; tries < 2000; ++tries) {
    const std::string stat = "/proc/" + std::to_string(process) + "/stat";
    std::ifstream in(stat);
    std::string text;
    if (!std::getline(in, text) || text.find(") Z ") != std::string::npos) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  kill(process, SIGKILL);
  return false;
}

TEST(WriterServer, WritesOneDraftAfterTheOther) {
  auto server = WriterServer::start();
  for (int i = 0; i < 3; ++i) {
    TakenFolder folder("quoll://compose?subject=S" + std::to_string(i));
    folder.add(0, "a.txt", "content");
    const WriterAnswer answer = server.write(folder.taken(), folder.output());
    EXPECT_EQ(answer.end, WriterEnd::kWritten) << answer.reason;
    EXPECT_EQ(answer.reason, "");
    EXPECT_EQ(take_fields(folder.output()).subject, "S" + std::to_string(i));
    const std::string message = folder.written();
    EXPECT_NE(message.find("Content-Type: text/plain; name=a.txt"), std::string::npos) << message;
    EXPECT_NE(message.find("Y29udGVudA=="), std::string::npos) << "its content" << message;
  }
}

TEST(WriterServer, WhatEachEndMeans) {
  struct Row {
    const char* reason;
    WriterServer::Job job;
    WriterEnd end;
    const char* words;
  };
  const Row rows[] = {
      {"no room", [](int, int) { throw std::system_error(ENOSPC, std::generic_category()); },
       WriterEnd::kNotNow, "there is no room for the draft"},
      {"no room of the user's",
       [](int, int) { throw std::system_error(EDQUOT, std::generic_category()); },
       WriterEnd::kNotNow, "there is no room for the draft"},
      {"no descriptor", [](int, int) { throw std::system_error(EMFILE, std::generic_category()); },
       WriterEnd::kNotNow, "too many files are open to write it"},
      {"none of the system's",
       [](int, int) { throw std::system_error(ENFILE, std::generic_category()); },
       WriterEnd::kNotNow, "too many files are open to write it"},
      {"as long as a file may be",
       [](int, int) { throw std::system_error(EFBIG, std::generic_category()); },
       WriterEnd::kFailed, "the draft cannot be written: it becomes larger than its files make it"},
      {"a file that has changed", [](int, int) { throw FileHasChanged(); }, WriterEnd::kFailed,
       "the draft cannot be written: a file has changed since it was taken"},
      {"an error", [](int, int) { throw std::system_error(EIO, std::generic_category()); },
       WriterEnd::kFailed, "the draft cannot be written: input/output error"},
      {"no memory", [](int, int) { throw std::bad_alloc(); }, WriterEnd::kFailed,
       "the draft cannot be written: it needs more memory than it may have"},
      {"anything", [](int, int) { throw 1; }, WriterEnd::kFailed, "the draft cannot be written"},
      {"a fall",
       [](int, int) {
         raise(SIGSEGV);
         kill(getpid(), SIGSEGV);
         __builtin_trap();
       },
       WriterEnd::kFailed, "the draft cannot be written: its writer was ended by signal"},
      {"no command",
       [](int taken, int output) {
         (void)!unlinkat(taken, "command", 0);
         write_message(taken, output);
       },
       WriterEnd::kFailed, "the draft cannot be written: its command cannot be read"},
  };
  for (const Row& row : rows) {
    if (sandbox::kSanitizerBuild && row.reason == std::string("a fall")) {
      continue;  // a sanitizer reports it and ends the process itself
    }
    auto server = WriterServer::start(row.job);
    const TakenFolder folder("quoll://nothing");
    const WriterAnswer answer = server.write(folder.taken(), folder.output());
    EXPECT_EQ(answer.end, row.end) << row.reason;
    EXPECT_TRUE(answer.reason.starts_with(row.words)) << row.reason << ": " << answer.reason;
    EXPECT_EQ(server.write(folder.taken(), folder.output()).end, row.end)
        << row.reason << ": the server goes on";
  }
}

/// The answer when the child is ended by a signal.
WriterAnswer answer_after(int signal) {
  std::signal(signal, SIG_DFL);  // somebody may have started the tests with nohup
  auto server = WriterServer::start(hang);
  const TakenFolder folder;
  WriterAnswer answer;
  std::thread writing([&] { answer = server.write(folder.taken(), folder.output()); });
  kill(family_in(folder).child, signal);
  writing.join();
  const TakenFolder next;
  std::thread again([&] { static_cast<void>(server.write(next.taken(), next.output())); });
  EXPECT_GT(family_in(next).child, 0) << "the next draft goes on";
  server.stop();
  again.join();
  return answer;
}

TEST(WriterServer, AChildThatIsEnded) {
  EXPECT_EQ(answer_after(SIGTERM).end, WriterEnd::kStopped) << "by a session that ends";
  EXPECT_EQ(answer_after(SIGHUP).end, WriterEnd::kStopped);
  EXPECT_EQ(answer_after(SIGKILL).end, WriterEnd::kFailed) << "as a system without memory does";
  EXPECT_EQ(answer_after(SIGXCPU).reason, "the draft cannot be written: it takes too long");
}

TEST(WriterServer, OneThatStandsStillIsEnded) {
  TakenFolder folder("quoll://compose?");
  folder.open_both();
  auto server = WriterServer::start(hang, std::chrono::milliseconds(300));
  const WriterAnswer answer = server.write(folder.taken(), folder.output());
  EXPECT_EQ(answer.end, WriterEnd::kFailed);
  EXPECT_EQ(answer.reason, "the draft cannot be written: it takes too long");
}

TEST(WriterServer, AServerThatIsEndedTakesItsChildAlong) {
  auto server = WriterServer::start(hang);
  const TakenFolder folder;
  WriterAnswer answer;
  std::thread writing([&] { answer = server.write(folder.taken(), folder.output()); });
  const Family family = family_in(folder);
  kill(family.server, SIGKILL);
  writing.join();
  EXPECT_EQ(answer.end, WriterEnd::kStopped);
  EXPECT_TRUE(ends(family.child));
  EXPECT_EQ(server.write(folder.taken(), folder.output()).end, WriterEnd::kStopped);
}

TEST(WriterServer, StopEndsBothAtOnce) {
  auto server = WriterServer::start(hang);
  const TakenFolder folder;
  WriterAnswer answer;
  std::thread writing([&] { answer = server.write(folder.taken(), folder.output()); });
  const Family family = family_in(folder);
  server.stop();
  server.stop();
  writing.join();
  EXPECT_EQ(answer.end, WriterEnd::kStopped);
  EXPECT_TRUE(ends(family.child));
  EXPECT_TRUE(ends(family.server));
}

TEST(WriterServer, NobodyIsLeftOfAReceiverThatWasKilled) {
  const TakenFolder folder;
  const pid_t receiver = fork();
  if (receiver == 0) {
    auto server = WriterServer::start(hang);
    static_cast<void>(server.write(folder.taken(), folder.output()));
    _exit(1);
  }
  const Family family = family_in(folder);
  kill(receiver, SIGKILL);
  waitpid(receiver, nullptr, 0);
  EXPECT_TRUE(ends(family.child));
  EXPECT_TRUE(ends(family.server));
}

void report_descriptors(int taken_folder, int output) {
  std::string open;
  for (int number = 0; number < 100; ++number) {
    struct stat status {};
    if (fstat(number, &status) == 0) {
      open += std::to_string(number) + " ";
    }
  }
  say(output, open + std::to_string(taken_folder) + std::to_string(output));
}

TEST(WriterServer, AChildHasTwoDescriptorsAndTheEmptyStreams) {
  const posix::UniqueFd inherited(open("/etc/passwd", O_RDONLY));  // not closed on exec
  auto server = WriterServer::start(report_descriptors);
  const TakenFolder folder;
  EXPECT_EQ(server.write(folder.taken(), folder.output()).end, WriterEnd::kWritten);
  EXPECT_EQ(folder.written(), "0 1 2 3 4 34");
}

void try_places(int taken_folder, int output) {
  for (const char* const path : {"command", "../sibling/command", "/etc/passwd", "/usr/bin/env",
                                 "/proc/self/maps", "link", "files/0/a"}) {
    const int opened = openat(taken_folder, path, O_RDONLY);
    say(output, opened >= 0 ? "read " : "refused ");
    close(opened);
  }
  say(output, openat(taken_folder, "new", O_WRONLY | O_CREAT, 0600) >= 0 ? "made " : "refused ");
  say(output, openat(taken_folder, "command", O_WRONLY) >= 0 ? "written " : "refused ");
  say(output, socket(AF_UNIX, SOCK_STREAM, 0) >= 0 ? "connected " : "refused ");
  execl("/bin/true", "true", nullptr);
  say(output, "refused");
}

TEST(WriterServer, OnlyTheFolderOfTheDraftIsRead) {
  if (sandbox::PathRules::kernel_version() < 2) {
    GTEST_SKIP() << "this kernel has no rules for paths";
  }
  TakenFolder folder;
  folder.add(0, "a", "x");
  std::filesystem::create_directories(folder.around().path("sibling"));
  folder.around().write("sibling/command", "secret");
  std::filesystem::create_symlink("../sibling/command", folder.around().path("taken/link"));
  auto server = WriterServer::start(try_places);
  EXPECT_EQ(server.write(folder.taken(), folder.output()).end, WriterEnd::kWritten);
  const std::string own = sandbox::kSanitizerBuild ? "read " : "refused ";
  EXPECT_EQ(folder.written(),
            "read refused refused refused " + own + "refused read refused refused refused refused");
}

void try_to_write(int taken_folder, int output) {
  say(output, openat(taken_folder, "command", O_RDONLY) >= 0 ? "0" : std::to_string(errno));
  for (const int flags : {O_WRONLY, O_RDWR, O_RDONLY | O_TRUNC, O_RDONLY | O_CREAT}) {
    say(output,
        openat(taken_folder, "command", flags, 0600) >= 0 ? " 0" : " " + std::to_string(errno));
  }
}

// By the filter, also where the kernel has no rules for paths.
TEST(WriterServer, ADraftIsNotOpenedForWriting) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer opens files itself";
  }
  auto server = WriterServer::start(try_to_write);
  const TakenFolder folder;
  EXPECT_EQ(server.write(folder.taken(), folder.output()).end, WriterEnd::kWritten);
  const std::string refused = " " + std::to_string(ENOSYS);
  EXPECT_EQ(folder.written(), "0" + refused + refused + refused + refused);
}

TEST(WriterServer, HasItsLimits) {
  const auto limits_of = [](const TakenFolder& folder) {
    auto server = WriterServer::start(hang);
    std::thread writing([&] { static_cast<void>(server.write(folder.taken(), folder.output())); });
    std::ifstream in("/proc/" + std::to_string(family_in(folder).child) + "/limits");
    std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    server.stop();
    writing.join();
    return all;
  };
  const auto cpu = [](const std::string& limits) {
    return std::stoi(limits.substr(limits.find("Max cpu time") + 12));
  };
  rlimit core{};
  getrlimit(RLIMIT_CORE, &core);
  const rlimit largest_core{core.rlim_max, core.rlim_max};
  setrlimit(RLIMIT_CORE, &largest_core);
  TakenFolder folder;
  const std::string small = limits_of(folder);
  setrlimit(RLIMIT_CORE, &core);
  EXPECT_EQ(cpu(small), 60) << small;
  EXPECT_NE(small.find("Max core file size        0 "), std::string::npos) << small;
  EXPECT_NE(small.find("Max file size             1073741824 "), std::string::npos) << small;
  folder.add(0, "large", "");
  folder.note_size(0, 250'000'000);
  folder.open_both();
  const std::string large = limits_of(folder);
  EXPECT_EQ(cpu(large), 85);
  EXPECT_NE(large.find("Max file size             1448741824 "), std::string::npos) << large;
}

// More than a command has that comes over the bus; of the cells a quarter of that, unless large
// ones are asked for: they take 10 s.
TEST(WriterServer, LargeDraftsFitIntoItsMemory) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer takes more memory and time";
  }
  auto server = WriterServer::start();
  constexpr std::size_t kMiB = 1U << 20U;
  const std::size_t cells = std::getenv("QUOLL_LARGE_FILES") != nullptr ? 64 * kMiB : 16 * kMiB;
  for (const auto& [piece, size] : {std::pair("<td>x", cells), std::pair("<", 16 * kMiB)}) {
    std::string html;
    while (html.size() < size) {
      html += piece;
    }
    const TakenFolder folder("quoll://compose?htmlBody=" + foundation::percent_encode(html));
    const WriterAnswer answer = server.write(folder.taken(), folder.output());
    EXPECT_EQ(answer.end, WriterEnd::kWritten) << piece << answer.reason;
    EXPECT_FALSE(take_fields(folder.output()).text.empty()) << piece;
  }
}

}  // namespace
}  // namespace quoll::compose
