// What the folder helper, as it was built, cannot do while it packs a folder.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/sandbox/probing.h"

namespace quoll::test {
namespace {

/// One that was started by hand: it does not rest on the sandbox of the program that starts it.
class FolderSandbox : public Probing {
 protected:
  int inside(const std::string& name) override {
    std::filesystem::create_directory(home_.path("folder"));
    home_.write("folder/a", "x");
    input_ = posix::UniqueFd(open(home_.path("folder").c_str(), O_RDONLY | O_DIRECTORY));
    const std::string output = home_.path("out.zip");
    return run_probe(name,
                     {"sh", "-c", "exec \"$0\" zip folder >\"$1\"", QUOLL_FOLDER_HELPER, output},
                     "quoll-folder-helper");
  }
};

TEST_F(FolderSandbox, NoOtherFolderIsReadAndNothingIsWritten) {
  for (const char* const name : {"read another file", "list the home folder", "write another file",
                                 "make a file", "make a file in the temporary folder"}) {
    only_outside(name, sandbox::kSanitizerBuild ? 1 : 0);
  }
}

TEST_F(FolderSandbox, NoFileIsChanged) {
  for (const char* const name : {"make a folder", "make a link", "make a pipe", "remove a file",
                                 "rename a file", "link a file", "truncate a file", "change a mode",
                                 "change an owner", "change the times", "change an attribute"}) {
    only_outside(name);
  }
}

TEST_F(FolderSandbox, NothingIsStartedAndNobodyIsReached) {
  for (const char* const name :
       {"start a program", "start a program by descriptor", "start a program from memory",
        "trace a process", "read a process's memory", "take a process's descriptor",
        "signal a process", "make a local socket", "make a TCP socket", "make a kernel socket",
        "open by handle", "watch a folder", "mount", "change the root"}) {
    only_outside(name);
  }
}

/// As a share starts it.
class FolderHelperOfAShare : public Probing {
 protected:
  int inside(const std::string& name) override {
    std::filesystem::create_directory(home_.path("folder"));
    // The module is an item, so that it can be read there.
    return run_probe(name, {QUOLL_SHARE, "--print", home_.path("folder"), QUOLL_PROBE_MODULE},
                     "quoll-folder-helper");
  }
};

TEST_F(FolderHelperOfAShare, IsConfinedToo) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer does not find its options there, and refuses the probe's module";
  }
  only_outside("read another file");
  only_outside("make a local socket");
}

/// The share itself, when it has a folder to pack.
class SandboxWithAFolder : public Probing {
 protected:
  int inside(const std::string& name) override {
    std::filesystem::create_directory(home_.path("folder"));
    return run_probe(name, {QUOLL_SHARE, "--print", home_.path("folder")}, "quoll-share");
  }
};

TEST_F(SandboxWithAFolder, NoOtherFolderIsListed) {
  only_outside("list the home folder", 1);
  only_outside("read another file", 1);
  only_outside("start a program", 1);
}

}  // namespace
}  // namespace quoll::test
