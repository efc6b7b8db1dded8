// Kernels that offer less: one line says so, and the share goes on with what there is.
#include <gtest/gtest.h>

#include <sstream>

#include "apps/sandbox/path_rules.h"
#include "tests/sandbox/probing.h"

namespace quoll::test {
namespace {

class LesserKernel : public Probing {
 protected:
  int inside(const std::string& name) override {
    return run_probe(
        name, {QUOLL_PROBE_PROGRAM, missing_, QUOLL_SHARE, "--print", home_.path("selected")},
        "quoll-share");
  }
  /// The lines of a share's log that tell of its sandbox.
  std::vector<std::string> lines_without(const std::string& missing) {
    missing_ = missing;
    const std::string file = home_.write("a.txt", "x");
    std::vector<std::string> command{QUOLL_SHARE, "--verbose", "--print", file};
    if (!missing.empty()) {
      command.insert(command.begin(), {QUOLL_PROBE_PROGRAM, missing});
    }
    const Ended ended = run(command, environment_);
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(attachments_of(ended.output).size(), 1U);
    std::vector<std::string> told;
    std::istringstream errors(ended.errors);
    for (std::string line; std::getline(errors, line);) {
      if (line.find("confine: ") != std::string::npos) {
        told.push_back(line.substr(line.find("confine: ")));
      }
    }
    return told;
  }

  std::string missing_;
};

#define NEEDS_WHOLE_KERNEL()                                                      \
  if (sandbox::PathRules::kernel_version() < sandbox::PathRules::kWholeVersion) { \
    GTEST_SKIP() << "this kernel offers less itself: rules for paths of version " \
                 << sandbox::PathRules::kernel_version();                         \
  }

TEST_F(LesserKernel, NothingIsSaidWhenAllIsThere) {
  NEEDS_WHOLE_KERNEL();
  EXPECT_EQ(lines_without(""), std::vector<std::string>{});
}

TEST_F(LesserKernel, WithoutRulesForPathsTheFilterHolds) {
  EXPECT_EQ(lines_without("paths"),
            std::vector<std::string>{"confine: this kernel offers less than is wanted: no rules "
                                     "for paths: Function not implemented"});
  only_outside("make a local socket");
  only_outside("make a link in the group");
  inside_too("read another file");
}

TEST_F(LesserKernel, OfAnOldVersionOneLineTells) {
  NEEDS_WHOLE_KERNEL();
  EXPECT_EQ(lines_without("old-paths"),
            std::vector<std::string>{"confine: this kernel offers less than is wanted: rules for "
                                     "paths of version 2, not 6"});
  only_outside("read another file", 1);
  inside_too("signal a process");
}

TEST_F(LesserKernel, WithoutAFilterTheRulesForPathsHold) {
  NEEDS_WHOLE_KERNEL();
  EXPECT_EQ(lines_without("calls"),
            std::vector<std::string>{"confine: this kernel offers less than is wanted: no filter "
                                     "of system calls: Invalid argument"});
  only_outside("read another file", 1);
  only_outside("make a link in the group", 1);
  inside_too("make a local socket");
}

TEST_F(LesserKernel, WithoutBothOneLineTells) {
  EXPECT_EQ(lines_without("both"),
            std::vector<std::string>{"confine: this kernel offers less than is wanted: no rules "
                                     "for paths: Function not implemented; no filter of system "
                                     "calls: Invalid argument"});
}

}  // namespace
}  // namespace quoll::test
