// What quoll-share, as it was built, cannot do once it has confined itself.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "apps/sandbox/path_rules.h"
#include "apps/sandbox/sanitizer_build.h"
#include "tests/sandbox/probing.h"

namespace quoll::test {
namespace {

class Sandbox : public Probing {
 protected:
  int inside(const std::string& name) override {
    return run_probe(name, {QUOLL_SHARE, "--print", home_.path("selected")}, "quoll-share");
  }
};

TEST_F(Sandbox, WhatWasSelectedIsReadAndTheGroupWritten) {
  inside_too("read what was selected");
  inside_too("write into the group");
}

TEST_F(Sandbox, AnotherFileCannotBeRead) {
  only_outside("read another file", 1);
  only_outside("read a file by another way", 1);
}

// The folders of libraries may be read, but not when that would be all that the user has.
TEST_F(Sandbox, ALibraryInTheHomeFolderLetsNoOtherFileBeRead) {
  if (sandbox::PathRules::kernel_version() < 1) {
    GTEST_SKIP() << "this kernel has no rules for paths";
  }
  const std::string library = home_.path("library.so");
  std::filesystem::copy_file(QUOLL_PROBE_MODULE, library);
  environment_["HOME"] = home_.path("");
  const auto probe = [&](const std::string& name) {
    return run_probe(
        name, {"env", "LD_PRELOAD=" + library, QUOLL_SHARE, "--print", home_.path("selected")},
        "quoll-share");
  };
  EXPECT_EQ(probe("read what was selected"), 0);
  EXPECT_EQ(probe("read another file"), EACCES);
}

TEST_F(Sandbox, FoldersCannotBeListed) {
  only_outside("list the home folder", 1);
}

TEST_F(Sandbox, NothingOutsideTheGroupIsWritten) {
  for (const char* const name :
       {"write what was selected", "write another file", "make a file",
        "make a file in the temporary folder", "make a folder", "make a link"}) {
    only_outside(name, 1);
  }
  only_outside("truncate a file", 3);
}

TEST_F(Sandbox, NothingOutsideTheGroupIsRemovedOrMoved) {
  for (const char* const name :
       {"remove a file", "remove a folder", "rename a file", "move a file into the group",
        "move a file out of the group", "link a file"}) {
    only_outside(name, 1);
  }
}

TEST_F(Sandbox, OnlyFilesAndFoldersAreMadeInTheGroup) {
  only_outside("make a pipe", 1);
  only_outside("make a link in the group");
}

TEST_F(Sandbox, NoFileFromElsewhereIsLinkedIntoTheGroup) {
  for (const char* const name :
       {"link a selected file into the group", "link another file into the group",
        "link an open file into the group"}) {
    only_outside(name, 1);
  }
  only_outside("link by an open folder");
  input_.reset(open(home_.write("input", "content").c_str(), O_RDONLY));
  only_outside("link standard input into the group", 1);
  inside_too("name a file without a name");
}

TEST_F(Sandbox, LinksAreNotRead) {
  if (!sandbox::kSanitizerBuild) {
    only_outside("read where a link leads");
  }
}

TEST_F(Sandbox, ModesOwnersTimesAndAttributesStay) {
  for (const char* const name :
       {"change a mode", "change a mode in a folder", "change an owner", "change the times",
        "change an attribute", "remove an attribute"}) {
    only_outside(name);
  }
}

TEST_F(Sandbox, NoProgramIsStarted) {
  only_outside("start a program", 1);
  only_outside("start a program by descriptor");
  only_outside("start a program from memory", 1);
  only_outside("start a program from the group", 1);
}

TEST_F(Sandbox, NoProcessIsTraced) {
  only_outside("trace a process");
}

TEST_F(Sandbox, NoProcessIsLookedInto) {
  for (const char* const name :
       {"read a process's memory", "take a process's descriptor", "compare processes"}) {
    only_outside(name);
  }
  only_outside("read another program's environment", 1);
  only_outside("read another program's command line", 1);
  if (!sandbox::kSanitizerBuild) {
    only_outside("list the sockets of all programs", 1);
  }
  only_outside("read another program's memory", 1);
}

TEST_F(Sandbox, NoProcessIsSignalled) {
  only_outside("signal a process", 6);
  only_outside("signal a thread", 6);
  only_outside("signal by descriptor");
}

TEST_F(Sandbox, NoProcessIsHampered) {
  only_outside("slow a process down");
  only_outside("limit a process");
  only_outside("bind a process to processors");
}

TEST_F(Sandbox, NoSocketIsMade) {
  for (const char* const name :
       {"make a local socket", "make a local socket for datagrams", "make a TCP socket",
        "make a UDP socket", "make a TCP socket of IPv6", "make a raw socket",
        "make a kernel socket", "make a socket to the host machine"}) {
    only_outside(name);
  }
  if (!sandbox::kSanitizerBuild) {
    only_outside("make a pair of sockets");
  }
}

TEST_F(Sandbox, TheSessionBusIsNotReached) {
  const PrivateBus bus;
  environment_["QUOLL_PROBE_SOCKET"] = bus.socket();
  only_outside("reach the session bus");
}

TEST_F(Sandbox, AnOpenSocketReachesNobodyElse) {
  const std::string path = home_.path("inbox");
  environment_["QUOLL_PROBE_INBOX"] = path;
  const posix::UniqueFd inbox(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_un where{};
  where.sun_family = AF_UNIX;
  path.copy(where.sun_path, sizeof where.sun_path - 1);
  ASSERT_EQ(bind(inbox.get(), reinterpret_cast<const sockaddr*>(&where), sizeof where), 0);
  // Handed over as standard input, which is not closed.
  input_.reset(socket(AF_UNIX, SOCK_DGRAM, 0));
  only_outside("send to an address");
  only_outside("send a descriptor");
  input_.reset(socket(AF_UNIX, SOCK_DGRAM, 0));
  only_outside("connect an open socket");
}

TEST_F(Sandbox, TheLauncherMakesOneDraftAndNothingElse) {
  const PrivateBus bus(environment_);
  for (const std::string name : {"it.vorlent.quoll2", "it.vorlent.quoll2.Other"}) {
    bus.add_service(name, RECEIVER_DOUBLE " bus " + name + " answer " + home_.path("record"));
  }
  environment_ = bus.environment();
  const auto asked = [this](const std::string& name) {
    return run_probe(name, {QUOLL_SHARE, home_.path("selected")}, "quoll-share");
  };
  EXPECT_EQ(asked("have a draft made"), 0);
  EXPECT_EQ(asked("have two drafts made"), EPERM);
  EXPECT_EQ(asked("have two drafts made at once"), EPERM);
  EXPECT_EQ(asked("have another application opened"), EPERM);
  EXPECT_EQ(asked("have a message deleted"), EPERM);
}

TEST_F(Sandbox, RarePartsOfTheKernelAreShut) {
  for (const char* const name :
       {"make a ring of calls", "load a kernel map", "count events", "handle page faults",
        "keep a key", "ask for a keyring", "open by handle", "watch a folder",
        "watch the file system", "share memory"}) {
    only_outside(name);
  }
}

TEST_F(Sandbox, TheViewOfTheSystemStays) {
  for (const char* const name : {"mount", "change the root", "leave the namespaces",
                                 "start in a new namespace", "enter a namespace"}) {
    only_outside(name);
  }
}

TEST_F(Sandbox, TheUserStays) {
  only_outside("become a user");
  only_outside("become a group");
  if (!sandbox::kSanitizerBuild) {
    only_outside("change the personality");
  }
}

TEST_F(Sandbox, NothingIsTypedIntoTheTerminal) {
  int master = -1;
  int terminal = -1;
  ASSERT_EQ(openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
  const posix::UniqueFd holder(master);
  input_.reset(terminal);
  only_outside("type into the terminal");
}

TEST_F(Sandbox, WhatTheHostLeftOpenIsClosed) {
  const posix::UniqueFd held(open(home_.write("held", "content").c_str(), O_RDONLY));
  environment_["QUOLL_PROBE_DESCRIPTOR"] = std::to_string(held.get());
  EXPECT_EQ(outside("read an inherited descriptor"), 0);
  lseek(held.get(), 0, SEEK_SET);
  EXPECT_EQ(inside("read an inherited descriptor"), EBADF);
  const Ended ended =
      run({"sh", "-c", "exec \"$0\" --print /dev/fd/9 9<\"$1\"", QUOLL_SHARE, home_.path("held")},
          environment_);
  EXPECT_EQ(ended.status, 0) << "an item may be one: " << ended.errors;
}

TEST_F(Sandbox, CallsOfAnotherMachineEndTheProgram) {
  if (const int answer = outside("call as another machine"); answer != 0) {
    GTEST_SKIP() << "cannot be done here without a sandbox either: " << strerror(answer);
  }
  EXPECT_EQ(inside("call as another machine"), no_answer(128 + SIGSYS));
}

TEST_F(Sandbox, TheRunningProgramIsMarked) {
  ASSERT_EQ(home_.print({home_.write("first", "1")}).status, 0);
  const posix::UniqueFd turn(
      open((home_.container() + "/.locks/turn").c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_EQ(flock(turn.get(), LOCK_EX | LOCK_NB), 0);
  Process share(ShareHome::command({"--print", home_.path("first")}), environment_);
  ASSERT_TRUE(waits_for_lock(share.id()));
  const std::string status = read_file("/proc/" + std::to_string(share.id()) + "/status");
  EXPECT_NE(status.find("NoNewPrivs:\t1\nSeccomp:\t2\n"), std::string::npos) << status;
  ASSERT_EQ(flock(turn.get(), LOCK_UN), 0);
  EXPECT_EQ(share.wait(), 0);
}

TEST_F(Sandbox, LinksFilesAndImagesAreSharedInside) {
  const std::string gif(
      "GIF89a\1\0\1\0\x80\0\0\0\0\0\xFF\xFF\xFF\x2C\0\0\0\0\1\0\1\0\0\2\2\x44\1\0\x3B", 35);
  const Ended ended =
      home_.print({"--verbose", "https://example.org/", home_.write("a.txt", "x"), "-"},
                  home_.write("input", gif));
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(attachments_of(ended.output).size(), 2U);
  EXPECT_NE(ended.output.find("example.org"), std::string::npos);
}

}  // namespace
}  // namespace quoll::test
