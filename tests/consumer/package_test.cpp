// The installed tree, used as another project uses it.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/integration/private_bus.h"

namespace quoll::test {
namespace {

constexpr const char* kConsumed =
    "quoll://compose?to=j%40h%3B\n"
    "<j@h>\n"
    "it.vorlent.quoll2\n"
    "fragment\n"
    "NSInvalidArgumentException\n";

/// Installed once for all tests of this file.
class Package : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new TemporaryFolder;
    expect_success({"cmake", "--install", QUOLL_BUILD, "--prefix", prefix()});
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  static std::string prefix() { return folder_->path("installed"); }
  static void expect_success(const std::vector<std::string>& command,
                             const Environment& environment = {}) {
    const Ended ended = run(command, environment);
    ASSERT_EQ(ended.status, 0) << ended.output << ended.errors;
  }
  /// Builds a project of the sources against what is installed and answers where.
  static std::string build(const std::string& project) {
    std::string folder = folder_->path(std::filesystem::path(project).filename().string());
    expect_success({"cmake", "-S", std::string(QUOLL_SOURCE) + "/" + project, "-B", folder, "-G",
                    "Ninja", "-DCMAKE_PREFIX_PATH=" + prefix(),
                    std::string("-DCMAKE_CXX_COMPILER=") + QUOLL_CXX,
                    std::string("-DCMAKE_CXX_FLAGS=") + QUOLL_CXX_FLAGS});
    expect_success({"cmake", "--build", folder});
    return folder;
  }

  static TemporaryFolder* folder_;
};

TemporaryFolder* Package::folder_ = nullptr;

// A share menu whose program cannot be started takes its application down with it.
TEST_F(Package, TheEntryOfTheShareMenuStartsTheProgram) {
  const std::string package = prefix() + "/share/kpackage/Purpose/it.vorlent.quoll2.share";
  EXPECT_TRUE(std::filesystem::exists(package + "/metadata.json"));
  const Ended ended = run({package + "/contents/code/main.bin", "--server", "/nowhere"});
  EXPECT_EQ(ended.status, 2) << ended.errors;
}

TEST_F(Package, BothKindsOfTheLibraryAreFoundByCMake) {
  const std::string folder = build("tests/consumer");
  for (const char* program : {"/consumer-shared", "/consumer-static"}) {
    const Ended ended = run({folder + program});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.output, kConsumed) << program;
  }
}

TEST_F(Package, EveryHeaderStandsAlone) {
  const std::string headers = prefix() + "/include/quoll-extensions";
  const std::string compile = std::string(QUOLL_CXX) +
                              " -std=c++20 -Wall -Wextra -Wpedantic -Wshadow -Werror -fsyntax-only "
                              "-include {} -x c++ /dev/null -I" +
                              headers;
  expect_success({"sh", "-c",
                  "cd " + headers + " && find . -name '*.h' | sort | " +
                      "xargs -P 2 -I {} sh -c 'echo {}; " + compile + "'"});
}

TEST_F(Package, TheLibraryIsFoundByPkgConfig) {
  const std::string program = folder_->path("compiled-by-hand");
  const std::string library = prefix() + "/" + QUOLL_LIBDIR;
  expect_success({"sh", "-c",
                  std::string(QUOLL_CXX) + " " + QUOLL_CXX_FLAGS +
                      " $(pkg-config --define-variable=prefix=" + prefix() +
                      " --cflags --libs quoll-extensions) -o " + program + " -x c++ " +
                      QUOLL_SOURCE + "/tests/consumer/consumer.cpp -L" + library +
                      " -lquoll-extensions -I" + prefix() + "/include/quoll-extensions"},
                 {{"PKG_CONFIG_PATH", library + "/pkgconfig"}});
  const Ended ended = run({program}, {{"LD_LIBRARY_PATH", library}});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(ended.output, kConsumed);
}

TEST_F(Package, TheExampleOpensAComposeWindow) {
  const std::string folder = build("examples/compose");
  const PrivateBus bus;
  bus.add_service("it.vorlent.quoll2", prefix() + "/bin/quoll-compose --service");
  const std::string containers = bus.path("containers");
  Environment environment = bus.environment();
  environment["QUOLL_GROUP_CONTAINERS"] = containers;
  expect_success({prefix() + "/bin/quollctl", "sample-container", containers}, environment);
  expect_success({folder + "/compose-example"}, environment);

  const Ended shown = run({prefix() + "/bin/quoll-compose", "--list"}, environment);
  EXPECT_EQ(shown.status, 0) << shown.errors;
  std::string draft;
  for (const auto& entry :
       std::filesystem::directory_iterator(bus.data_home() + "/quoll-compose/drafts")) {
    draft = read_file(entry.path());
  }
  EXPECT_NE(draft.find("Subject: Hello from an example"), std::string::npos) << draft;
  EXPECT_NE(draft.find("Written by another extension."), std::string::npos) << draft;
  EXPECT_NE(draft.find("From: ann.lee@example.org"), std::string::npos) << draft;
}

TEST_F(Package, WithoutAccountsTheExampleSaysSo) {
  const PrivateBus bus;
  const Ended ended = run({folder_->path("compose") + "/compose-example"}, bus.environment());
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors, "there are no accounts\n");
}

}  // namespace
}  // namespace quoll::test
