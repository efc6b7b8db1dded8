// What the library is not to be used for does not compile against the installed headers.
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "tests/integration/process.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {
namespace {

const std::string kSource = std::string(QUOLL_SOURCE) + "/tests/consumer/misuses.cpp";

/// The source with every misuse in it, each on its lines and in a block of its own.
std::string all_misuses() {
  std::istringstream source(read_file(kSource));
  std::string all;
  for (std::string line; std::getline(source, line);) {
    const bool is_code = !line.starts_with('#') || line.starts_with("#include");
    all += is_code                      ? line
           : line.starts_with("#elif")  ? "} {"
           : line.starts_with("#endif") ? "}"
                                        : "{";
    all += '\n';
  }
  return all;
}

/// The lines of each misuse: from the one that names it up to, and without, the next directive.
std::map<int, std::pair<int, int>> lines_of_misuses() {
  std::map<int, std::pair<int, int>> found;
  std::istringstream source(read_file(kSource));
  int number = 0;
  std::string line;
  for (int at = 1; std::getline(source, line); ++at) {
    if (line.starts_with('#') && number != 0) {
      found[number].second = at;
      number = 0;
    }
    if (const auto name = line.find("MISUSE == "); name != std::string::npos) {
      number = std::stoi(line.substr(name + std::string_view("MISUSE == ").size()));
      found[number] = {at, at};
    }
  }
  return found;
}

class Misuse : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new TemporaryFolder;
    const Ended ended = run({"cmake", "--install", QUOLL_BUILD, "--component", "development",
                             "--prefix", folder_->path("installed")});
    ASSERT_EQ(ended.status, 0) << ended.errors;
    // The headers are compiled once; each misuse then takes a fraction of a second.
    std::istringstream source(read_file(kSource));
    std::string headers;
    for (std::string line; std::getline(source, line);) {
      headers += line.starts_with("#include") ? line + "\n" : "";
    }
    const Ended precompiled = run_compiler("-x c++-header " + folder_->write("headers.h", headers) +
                                           " -o " + folder_->path("headers.h.gch"));
    ASSERT_EQ(precompiled.status, 0) << precompiled.errors;
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }
  static Ended run_compiler(const std::string& arguments) {
    return run({"sh", "-c",
                std::string(QUOLL_CXX) + " -std=c++20 -I" +
                    folder_->path("installed/include/quoll-extensions") + " " + arguments});
  }
  static Ended compile(int misuse) {
    return run_compiler("-fsyntax-only -DMISUSE=" + std::to_string(misuse) + " -include " +
                        folder_->path("headers.h") + " " + kSource);
  }
  static Ended compile_all() {
    return run_compiler("-fsyntax-only -fmax-errors=0 -include " + folder_->path("headers.h") +
                        " " + folder_->write("misuses.cpp", all_misuses()));
  }

  static TemporaryFolder* folder_;
};

TemporaryFolder* Misuse::folder_ = nullptr;

TEST_F(Misuse, WithoutOneTheFileCompiles) {
  const Ended ended = compile(0);
  EXPECT_EQ(ended.status, 0) << ended.errors;
}

/// True when the compiler names an error in one of these lines.
bool has_error_in(const std::string& messages, const std::pair<int, int>& lines) {
  for (int line = lines.first; line < lines.second; ++line) {
    if (messages.find("misuses.cpp:" + std::to_string(line) + ":") != std::string::npos) {
      return true;
    }
  }
  return false;
}

TEST_F(Misuse, EachIsAnErrorWhereItStands) {
  const auto misuses = lines_of_misuses();
  ASSERT_EQ(misuses.size(), static_cast<std::size_t>(misuses.rbegin()->first));
  ASSERT_GT(misuses.size(), 30U);
  // One error may hide another, so what is not found among all is compiled by itself.
  const Ended all = compile_all();
  for (const auto& [number, lines] : misuses) {
    if (has_error_in(all.errors, lines)) {
      continue;
    }
    const Ended ended = compile(number);
    EXPECT_NE(ended.status, 0) << "misuse " << number << " compiles";
    EXPECT_TRUE(has_error_in(ended.errors, lines)) << "misuse " << number << ": " << ended.errors;
  }
}

}  // namespace
}  // namespace quoll::test
