#include "tests/sandbox/probing.h"

#include <fcntl.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "apps/sandbox/path_rules.h"

namespace quoll::test {

namespace fs = std::filesystem;

namespace {

bool is_refusal(int answer) {
  constexpr std::array kRefusals{EPERM, EACCES, ENOSYS, EXDEV};
  return std::find(kRefusals.begin(), kRefusals.end(), answer) != kRefusals.end();
}

std::string in_words(int answer) {
  return answer < 0 ? "its process ended with status " + std::to_string(-1 - answer)
                    : std::strerror(answer);
}

}  // namespace

Probing::Probing() {
  environment_ = home_.environment();
  environment_["QUOLL_PROBE_HOME"] = home_.path(".");
  environment_["QUOLL_PROBE_GROUP"] = home_.container();
  environment_["QUOLL_PROBE_VICTIM"] = std::to_string(victim_.id());
}

void Probing::TearDown() {
  if (!skipped_.empty() && !HasFailure()) {
    const char* const ci = std::getenv("CI");
    std::string reasons;
    for (const std::string& reason : skipped_) {
      reasons += reason + "\n";
    }
    const bool must_have_paths = ci != nullptr && std::string(ci) == "true";
    EXPECT_FALSE(must_have_paths && sandbox::PathRules::kernel_version() < 1) << reasons;
    GTEST_SKIP() << reasons;
  }
}

void Probing::prepare() const {
  fs::create_directories(home_.container());
  fs::remove_all(home_.path("other"));
  fs::remove_all(home_.path("new"));
  fs::remove_all(home_.container() + "/new");
  fs::remove_all(home_.container() + "/.incoming");  // locked to be swept, before it is confined
  fs::create_directory(home_.path("other"));
  for (const char* const name : {"selected", "unselected", "marked"}) {
    home_.write(name, "content");
  }
  home_.write("containers/K7Q2M9XT4B.quoll/staged", "content");
  std::error_code there_already;
  fs::create_symlink("somewhere", home_.path("pointer"), there_already);
  (void)!setxattr(home_.path("marked").c_str(), "user.quoll", "x", 1, 0);
}

int Probing::run_probe(const std::string& name, const std::vector<std::string>& command,
                       const std::string& in) {
  prepare();
  Environment environment = environment_;
  environment["QUOLL_PROBE"] = name;
  environment["QUOLL_PROBE_IN"] = in;
  const char* const options = std::getenv("ASAN_OPTIONS");
  environment["ASAN_OPTIONS"] =
      (options != nullptr ? std::string(options) + ":" : "") + "verify_asan_link_order=0";
  // Only the program itself gets the module, not the shell.
  const std::string input = input_ ? "<&" + std::to_string(input_.get()) : "</dev/null";
  std::vector<std::string> all{
      "sh", "-c", "export LD_PRELOAD=" QUOLL_PROBE_MODULE "; exec \"$@\" " + input, "sh"};
  all.insert(all.end(), command.begin(), command.end());
  const Ended ended = run(all, environment);
  const std::string head = "probe " + name + ": ";
  const std::size_t at = ended.errors.find(head);
  return at == std::string::npos ? no_answer(ended.status)
                                 : std::atoi(ended.errors.c_str() + at + head.size());
}

int Probing::outside(const std::string& name) {
  return run_probe(name, {QUOLL_PROBE_PROGRAM}, "");
}

void Probing::only_outside(const std::string& name, int version) {
  SCOPED_TRACE(name);
  if (sandbox::PathRules::kernel_version() < version) {
    skipped_.push_back(name + ": the kernel's rules for paths are not of version " +
                       std::to_string(version));
    return;
  }
  if (const int answer = outside(name); answer != 0) {
    skipped_.push_back(name +
                       ": cannot be done here without a sandbox either: " + in_words(answer));
    EXPECT_TRUE(answer > 0 && answer != EDOM) << in_words(answer);
    return;
  }
  const int answer = inside(name);
  EXPECT_TRUE(is_refusal(answer)) << in_words(answer);
}

void Probing::inside_too(const std::string& name) {
  SCOPED_TRACE(name);
  EXPECT_EQ(outside(name), 0);
  EXPECT_EQ(inside(name), 0);
}

}  // namespace quoll::test
