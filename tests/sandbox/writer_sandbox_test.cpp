// What the process cannot do that writes a draft of the receiver, once it has confined itself.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "apps/compose/writer_server.h"
#include "apps/sandbox/sanitizer_build.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "tests/sandbox/probes.h"
#include "tests/sandbox/probing.h"

namespace quoll::test {
namespace {

/// In the place of the writer: makes the probe that the command names.
void probe_in_writer(int taken_folder, int output) {
  std::string name;
  bool ended = false;
  const posix::UniqueFd command(openat(taken_folder, "command", O_RDONLY | O_CLOEXEC));
  const int answer = posix::read_until(command.get(), name, 1000, ended) ? probe(name) : errno;
  (void)!posix::write_all(output, std::to_string(answer));
}

class WriterSandbox : public Probing {
 protected:
  int inside(const std::string& name) override {
    prepare();
    std::filesystem::create_directories(home_.path("taken"));
    home_.write("taken/command", name);
    home_.write("output", "");
    const posix::UniqueFd taken(open(home_.path("taken").c_str(), O_RDONLY | O_DIRECTORY));
    const posix::UniqueFd output(open(home_.path("output").c_str(), O_RDWR));
    const ScopedEnvironment environment(environment_);
    auto server = compose::WriterServer::start(probe_in_writer);
    EXPECT_EQ(server.write(taken.get(), output.get()).end, compose::WriterEnd::kWritten) << name;
    int answer = -1;
    std::ifstream(home_.path("output")) >> answer;
    return answer;
  }
};

TEST_F(WriterSandbox, NoOtherFileIsReadAndNoFolderListed) {
  for (const char* const name :
       {"read another file", "read a file by another way", "list the home folder"}) {
    only_outside(name, 1);
  }
  only_outside("read another program's environment", 1);
}

TEST_F(WriterSandbox, NoFileIsWrittenOrMade) {
  const int version = sandbox::kSanitizerBuild ? 1 : 0;
  for (const char* const name : {"write another file", "make a file",
                                 "make a file in the temporary folder", "write into the group"}) {
    only_outside(name, version);
  }
}

TEST_F(WriterSandbox, NoFileIsChanged) {
  for (const char* const name :
       {"make a folder", "make a link", "make a pipe", "remove a file", "remove a folder",
        "rename a file", "link a file", "truncate a file", "change a mode",
        "change a mode in a folder", "change an owner", "change the times", "change an attribute",
        "remove an attribute"}) {
    only_outside(name);
  }
}

TEST_F(WriterSandbox, NothingIsStarted) {
  only_outside("start a program");
  only_outside("start a program by descriptor");
  only_outside("start a program from memory");
  if (!sandbox::kSanitizerBuild) {
    only_outside("start a process");
  }
}

TEST_F(WriterSandbox, NoProcessIsTouched) {
  for (const char* const name :
       {"read a process's memory", "take a process's descriptor", "compare processes",
        "signal a process", "signal by descriptor", "slow a process down"}) {
    only_outside(name);
  }
  if (!sandbox::kSanitizerBuild) {
    only_outside("trace a process");
    only_outside("limit a process");
    only_outside("signal a thread");
  }
}

TEST_F(WriterSandbox, NoSocketIsMade) {
  for (const char* const name :
       {"make a local socket", "make a local socket for datagrams", "make a pair of sockets",
        "make a TCP socket", "make a UDP socket", "make a kernel socket"}) {
    only_outside(name);
  }
}

TEST_F(WriterSandbox, RarePartsOfTheKernelAreShut) {
  for (const char* const name :
       {"make a ring of calls", "load a kernel map", "count events", "handle page faults",
        "keep a key", "open by handle", "watch a folder", "share memory", "mount",
        "change the root", "leave the namespaces", "become a user", "change the personality"}) {
    only_outside(name);
  }
}

TEST_F(WriterSandbox, MemoryIsLimitedAndNeverMadeExecutable) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer maps its memory itself";
  }
  only_outside("make memory executable");
  EXPECT_EQ(outside("take much memory"), 0);
  EXPECT_EQ(inside("take much memory"), ENOMEM);
}

}  // namespace
}  // namespace quoll::test
