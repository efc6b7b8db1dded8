// The installed tree, used as another project uses it.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "tests/integration/private_bus.h"

namespace quoll::test {
namespace {

constexpr const char* kConsumed =
    "quoll://compose?to=j%40h%3B\n"
    "<j@h>\n"
    "it.vorlent.quoll2\n"
    "fragment\n"
    "130\n"
    "NSInvalidArgumentException\n";

/// Installed once for all tests of this file, and moved then: nothing in the tree may know where it
/// was.
class Package : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new TemporaryFolder;
    const std::string first = folder_->path("installed");
    expect_success({"cmake", "--install", QUOLL_BUILD, "--prefix", first});
    std::filesystem::rename(first, prefix());
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  static std::string prefix() { return folder_->path("moved"); }
  static std::string library() { return prefix() + "/" + QUOLL_LIBDIR; }
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

  /// Compiles a program with what pkg-config says of the modules and answers where it is.
  static std::string compile(const std::string& source, const std::string& modules,
                             const std::string& kind = "") {
    std::string program = folder_->path("compiled-by-hand");
    const std::string option = kind == "-static" ? " --static" : "";
    expect_success(
        {"sh", "-c",
         std::string(QUOLL_CXX) + " " + QUOLL_CXX_FLAGS + " -std=c++20 " + kind + " " + source +
             " $(pkg-config" + option + " --cflags --libs " + modules + ") -o " + program},
        {{"PKG_CONFIG_PATH", library() + "/pkgconfig"}});
    return program;
  }
  static Ended run_with_library(const std::string& program) {
    return run({program}, {{"LD_LIBRARY_PATH", library()}});
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

// A program that is static needs static libraries throughout; the sanitizers have none.
bool can_be_static() {
  return std::string_view(QUOLL_CXX_FLAGS).find("-fsanitize") == std::string_view::npos;
}

TEST_F(Package, TheLibraryIsFoundByPkgConfig) {
  const std::string source = QUOLL_SOURCE "/tests/consumer/consumer.cpp";
  const Ended shared = run_with_library(compile(source, "quoll-extensions"));
  EXPECT_EQ(shared.status, 0) << shared.errors;
  EXPECT_EQ(shared.output, kConsumed);
  if (can_be_static()) {
    const Ended alone = run({compile(source, "quoll-extensions", "-static")});
    EXPECT_EQ(alone.status, 0) << alone.errors;
    EXPECT_EQ(alone.output, kConsumed);
  }
}

struct Adapter {
  const char* name;
  bool stands_alone;  ///< no library of the system behind it, which may come without a static form
};
constexpr Adapter kAdapters[] = {{"posix", true}, {"image_helper", true}, {"xml", true},
                                 {"gio", false},  {"icu", false},         {"links", false},
                                 {"cairo", false}};

TEST_F(Package, EachAdapterIsFoundByPkgConfigAlone) {
  for (const auto& [name, stands_alone] : kAdapters) {
    SCOPED_TRACE(name);
    const std::string source =
        std::string(QUOLL_SOURCE "/tests/consumer/adapters/") + name + ".cpp";
    const std::string module = std::string("quoll-linux-") + name;
    EXPECT_EQ(run_with_library(compile(source, module)).status, 0);
    if (stands_alone && can_be_static()) {
      EXPECT_EQ(run({compile(source, module, "-static")}).status, 0);
    }
  }
}

TEST_F(Package, EachAdapterIsFoundByCMake) {
  const std::string folder = build("tests/consumer");
  for (const Adapter& adapter : kAdapters) {
    EXPECT_EQ(run({folder + "/adapter-" + adapter.name}).status, 0) << adapter.name;
  }
}

/// The indented pieces of a document that are C++, one after the other. What is fenced is a program
/// of its own.
std::string examples_of(const std::string& file) {
  std::istringstream document(read_file(file));
  std::string examples;
  std::string piece;
  bool fenced = false;
  for (std::string line; std::getline(document, line);) {
    fenced = line.starts_with("```") != fenced;
    if (!fenced && line.starts_with("    ")) {
      piece += line + "\n";
    } else if (!piece.empty()) {
      examples += piece.find(';') == std::string::npos ? "" : piece;
      piece.clear();
    }
  }
  return examples;
}

TEST_F(Package, TheExamplesOfTheDocumentCompile) {
  const std::string source = folder_->path("document.cpp");
  std::ofstream out(source);
  for (const auto& header :
       std::filesystem::recursive_directory_iterator(prefix() + "/include/quoll-extensions")) {
    if (header.is_regular_file()) out << "#include " << header.path() << "\n";
  }
  const std::string examples = examples_of(QUOLL_SOURCE "/docs/library.md");
  EXPECT_NE(examples.find("quoll::platform::install({"), std::string::npos);
  out << "#include <iostream>\nint main() {\n" << examples << "}\n";
  out.close();
  compile(source, "quoll-linux-posix quoll-linux-gio");
}

TEST_F(Package, TheTutorialIsBuilt) {
  EXPECT_TRUE(std::filesystem::exists(build("examples/tutorial") + "/tutorial-view"));
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

  const std::filesystem::path receiver = bus.data_home() + "/quoll-compose";
  while (!std::filesystem::is_empty(receiver / "taken")) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));  // it is written after the answer
  }
  const Ended shown = run({prefix() + "/bin/quoll-compose", "--list"}, environment);
  EXPECT_EQ(shown.status, 0) << shown.errors;
  std::string draft;
  for (const auto& entry : std::filesystem::directory_iterator(receiver / "drafts")) {
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
