// What quoll-share-browser, as it was built, cannot do when it reads the first byte of what a
// browser says.
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/sandbox/probing.h"

namespace quoll::test {
namespace {

class BrowserSandbox : public Probing {
 protected:
  int inside(const std::string& name) override {
    return run_probe(name, {QUOLL_SHARE_BROWSER, "manifest", "share@quoll2.vorlent.it"},
                     "quoll-share-browser");
  }
};

TEST_F(BrowserSandbox, TheGroupIsWritten) {
  inside_too("write into the group");
}

TEST_F(BrowserSandbox, NoFileIsReadAndNoFolderListed) {
  only_outside("read what was selected", 1);
  only_outside("read another file", 1);
  only_outside("read a file by another way", 1);
  only_outside("list the home folder", 1);
}

TEST_F(BrowserSandbox, NothingOutsideTheGroupIsChanged) {
  for (const char* const name :
       {"write another file", "make a file", "make a file in the temporary folder", "make a folder",
        "make a link", "remove a file", "rename a file", "move a file into the group",
        "link another file into the group"}) {
    only_outside(name, 1);
  }
}

TEST_F(BrowserSandbox, NothingIsStarted) {
  only_outside("start a program", 1);
  only_outside("start a program from memory", 1);
  only_outside("start a program from the group", 1);
}

TEST_F(BrowserSandbox, NoProcessIsTouched) {
  only_outside("trace a process");
  only_outside("signal a process", 6);
  only_outside("read a process's memory");
}

TEST_F(BrowserSandbox, NoSocketIsMadeAndTheBusIsNotReached) {
  only_outside("make a local socket");
  only_outside("make a TCP socket");
  const PrivateBus bus;
  environment_["QUOLL_PROBE_SOCKET"] = bus.socket();
  only_outside("reach the session bus");
}

TEST_F(BrowserSandbox, TheLauncherMakesOneDraftAndNothingElse) {
  const PrivateBus bus(environment_);
  for (const std::string name : {"it.vorlent.quoll2", "it.vorlent.quoll2.Other"}) {
    bus.add_service(name, RECEIVER_DOUBLE " bus " + name + " answer " + home_.path("record"));
  }
  environment_ = bus.environment();
  EXPECT_EQ(inside("have a draft made"), 0);
  EXPECT_EQ(inside("have two drafts made"), EPERM);
  EXPECT_EQ(inside("have another application opened"), EPERM);
  EXPECT_EQ(inside("have a message deleted"), EPERM);
}

}  // namespace
}  // namespace quoll::test
