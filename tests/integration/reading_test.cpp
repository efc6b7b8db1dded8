// Drafts are shown to a person by a process that can do nothing but read them.
#include <cstdio>
#include <fstream>

#include "apps/sandbox/path_rules.h"
#include "apps/sandbox/sanitizer_build.h"
#include "tests/integration/client_home.h"

namespace quoll::test {
namespace {

class Reading : public testing::Test {
 protected:
  Reading() { std::filesystem::create_directories(home_.drafts_folder()); }

  void add(const std::string& name, const std::string& message) const {
    std::ofstream(home_.drafts_folder() + "/" + name) << message;
  }
  /// The line of /proc that says so of a program with a line of output and more than a pipe holds.
  static std::string status_line(Process& program, const std::string& name) {
    EXPECT_NE(program.read_line(), "");
    std::ifstream status("/proc/" + std::to_string(program.id()) + "/status");
    std::string line;
    while (std::getline(status, line) && !line.starts_with(name)) {
    }
    return line;
  }
  void expect_confined(const Words& arguments) const {
    Words command{QUOLL_COMPOSE};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Process filtered(command, home_.bus.environment());
    EXPECT_EQ(status_line(filtered, "Seccomp:"), "Seccomp:\t2");
    Process limited(command, home_.bus.environment());
    EXPECT_EQ(status_line(limited, "NoNewPrivs:"), "NoNewPrivs:\t1");
  }

  ReceiverHome home_;
};

TEST_F(Reading, ADraftIsShownByAConfinedProcess) {
  std::string message = "Content-Type: multipart/mixed; boundary=b\n\n";
  for (int part = 0; part < 3000; ++part) {
    message += "--b\nContent-Type: image/png\nContent-Disposition: attachment; filename=" +
               std::string(60, 'a') + "\n\nx\n";
  }
  add("20200101-000000.eml", message + "--b--\n");
  expect_confined({"--show"});
}

TEST_F(Reading, DraftsAreListedByAConfinedProcess) {
  for (int draft = 0; draft < 1000; ++draft) {
    add("20200101-000000-" + std::to_string(draft) + ".eml",
        "Subject: " + std::string(100, 'a') + "\n\n");
  }
  expect_confined({"--list"});
}

TEST_F(Reading, NothingElseIsReadFromTheList) {
  if (sandbox::kSanitizerBuild || sandbox::PathRules::kernel_version() < 2) {
    GTEST_SKIP() << "this kernel has no rules for paths";
  }
  add("20200101-000000.eml", "Subject: one\n\n");
  std::ofstream(home_.bus.path("elsewhere")) << "Subject: secret\n\n";
  std::filesystem::create_symlink(home_.bus.path("elsewhere"),
                                  home_.drafts_folder() + "/20200101-000001.eml");
  const auto list = home_.compose({"--list"});
  EXPECT_EQ(list.status, 0) << list.errors;
  EXPECT_TRUE(holds(list.output, "  one  ")) << list.output;
  EXPECT_FALSE(holds(list.output, "secret")) << list.output;
}

TEST_F(Reading, OtherEncodingsAreRead) {
  add("20200101-000000.eml",
      "Subject: =?iso-8859-1?Q?=FC?= =?windows-1251?Q?=E6?=\n"
      "Content-Type: text/plain; charset=iso-8859-15\nContent-Transfer-Encoding: 8bit\n\n\xA4\n");
  const auto shown = home_.compose({"--show"});
  EXPECT_TRUE(holds(shown.output, "Subject: \u00FC\u0436\n")) << shown.output;
  EXPECT_TRUE(holds(shown.output, "\n  \u20AC\n")) << shown.output;
  EXPECT_TRUE(holds(home_.compose({"--list"}).output, "  \u00FC\u0436  "));
}

}  // namespace
}  // namespace quoll::test
