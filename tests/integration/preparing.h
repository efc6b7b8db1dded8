#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "apps/sandbox/sanitizer_build.h"
#include "tests/integration/mixed_files.h"
#include "tests/integration/share_home.h"

namespace quoll::test {

namespace fs = std::filesystem;

/// Shares whose copies of files are slow or fail. Whoever includes this has QUOLL_SLOW_COPY.
class Preparing : public testing::Test {
 protected:
  void SetUp() override {
    if (sandbox::kSanitizerBuild) {
      GTEST_SKIP() << "a sanitizer has to be loaded first";
    }
  }
  /// A share that waits so many seconds in the middle of its first file.
  [[nodiscard]] std::vector<std::string> slowly(const std::string& seconds,
                                                std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"env", "LD_PRELOAD=" QUOLL_SLOW_COPY,
                                         "QUOLL_SLOW=" + seconds, QUOLL_SHARE, "--print"});
    return arguments;
  }
  [[nodiscard]] std::string incoming() const { return home_.container() + "/.incoming"; }
  void wait_until_it_prepares(const Process& share) const {
    std::error_code missing;
    while (!has_ended(share.id()) &&
           (!fs::exists(incoming(), missing) || fs::is_empty(incoming(), missing))) {
      usleep(1000);
    }
    usleep(200'000);  // until it waits in the middle of a file
  }

  ShareHome home_;
};

}  // namespace quoll::test
