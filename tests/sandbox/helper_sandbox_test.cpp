// What the image helper, as it was built, cannot do while it reads an image.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/sandbox/probing.h"

namespace quoll::test {
namespace {

const std::string kGif(
    "GIF89a\1\0\1\0\x80\0\0\0\0\0\xFF\xFF\xFF\x2C\0\0\0\0\1\0\1\0\0\2\2\x44\1\0\x3B", 35);

posix::UniqueFd image(const ShareHome& home) {
  return posix::UniqueFd(open(home.write("image.gif", kGif).c_str(), O_RDONLY));
}

/// One that was started by hand: it does not rest on the sandbox of the program that starts it.
class HelperSandbox : public Probing {
 protected:
  int inside(const std::string& name) override {
    input_ = image(home_);
    return run_probe(name, {QUOLL_IMAGE_HELPER, "png"}, "quoll-image-helper");
  }
};

TEST_F(HelperSandbox, NoFileIsOpened) {
  for (const char* const name : {"read another file", "list the home folder", "write another file",
                                 "make a file", "make a file in the temporary folder"}) {
    only_outside(name, sandbox::kSanitizerBuild ? 1 : 0);
  }
}

TEST_F(HelperSandbox, NoFileIsChanged) {
  for (const char* const name : {"make a folder", "make a link", "make a pipe", "remove a file",
                                 "rename a file", "link a file", "truncate a file", "change a mode",
                                 "change an owner", "change the times", "change an attribute"}) {
    only_outside(name);
  }
}

TEST_F(HelperSandbox, NothingIsStarted) {
  only_outside("start a program");
  only_outside("start a program by descriptor");
  only_outside("start a program from memory");
  if (!sandbox::kSanitizerBuild) {
    only_outside("start a process");
  }
}

TEST_F(HelperSandbox, NoProcessIsTouched) {
  for (const char* const name :
       {"trace a process", "read a process's memory", "take a process's descriptor",
        "compare processes", "signal a process", "signal by descriptor", "slow a process down",
        "limit a process"}) {
    const bool may_trace = sandbox::kSanitizerBuild && std::string(name) == "limit a process";
    if (!may_trace) {
      only_outside(name);
    }
  }
  only_outside("signal a thread", sandbox::kSanitizerBuild ? 6 : 0);
}

TEST_F(HelperSandbox, NoSocketIsMade) {
  for (const char* const name :
       {"make a local socket", "make a local socket for datagrams", "make a pair of sockets",
        "make a TCP socket", "make a UDP socket", "make a kernel socket"}) {
    only_outside(name);
  }
}

TEST_F(HelperSandbox, RarePartsOfTheKernelAreShut) {
  for (const char* const name :
       {"make a ring of calls", "load a kernel map", "count events", "handle page faults",
        "keep a key", "open by handle", "watch a folder", "share memory", "mount",
        "change the root", "leave the namespaces", "become a user", "change the personality"}) {
    only_outside(name);
  }
}

TEST_F(HelperSandbox, MemoryIsNeverMadeExecutable) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer maps its memory itself";
  }
  only_outside("make memory executable");
}

TEST_F(HelperSandbox, MemoryHasALimit) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer's shadow memory is larger than any limit";
  }
  EXPECT_EQ(outside("take much memory"), 0);
  EXPECT_EQ(inside("take much memory"), ENOMEM);
}

/// As a share starts it.
class HelperOfAShare : public Probing {
 protected:
  int inside(const std::string& name) override {
    input_ = image(home_);
    // The module is an item, so that it can be read there.
    return run_probe(name, {QUOLL_SHARE, "--verbose", "--print", "-", QUOLL_PROBE_MODULE},
                     "quoll-image-helper");
  }
};

TEST_F(HelperOfAShare, IsConfinedToo) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer does not find its options there, and refuses the probe's module";
  }
  only_outside("read another file");
  only_outside("make a local socket");
}

}  // namespace
}  // namespace quoll::test
