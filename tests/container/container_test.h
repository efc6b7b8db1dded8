#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quoll/foundation/collections.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/files.h"
#include "quoll/platform/desktop.h"
#include "tests/support/failing_files.h"
#include "tests/support/recorders.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {

/// A real container in a temporary folder, on a file system that fails where the test says so.
class ContainerTest : public ::testing::Test {
 protected:
  ContainerTest() {
    setenv("QUOLL_GROUP_CONTAINERS", folder.path().c_str(), 1);
    files = std::make_shared<FailingFiles>(posix::make_file_manager());
    desktop.emplace(platform::Desktop{.bundle = std::make_shared<FixedBundle>("it.vorlent.quoll2"),
                                      .files = files,
                                      .coordinator = posix::coordinator_factory(),
                                      .log = log});
  }
  ~ContainerTest() override {
    desktop.reset();
    unsetenv("QUOLL_GROUP_CONTAINERS");
  }

  [[nodiscard]] std::string staging() const {
    return folder.path("K7Q2M9XT4B.quoll/SharedData/Share");
  }

  static foundation::List list(std::vector<foundation::Value> values) {
    return foundation::List(std::move(values));
  }
  static std::vector<std::string> texts(const foundation::List& values) {
    std::vector<std::string> out;
    for (const foundation::Value& value : values) {
      out.push_back(*value.text());
    }
    return out;
  }

  TemporaryFolder folder;
  std::shared_ptr<FailingFiles> files;
  std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
  std::optional<platform::ScopedDesktop> desktop;
};

}  // namespace quoll::test
