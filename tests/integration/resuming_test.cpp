// Who goes on with the drafts that wait.
#include <fstream>

#include "tests/integration/client_home.h"

namespace quoll::test {
namespace {

class Resuming : public MailClientTest {
 protected:
  Resuming() { choose("claws-mail", "X"); }

  void add_waiting(const std::string& name, const std::string& command) const {
    std::filesystem::create_directories(home_.taken_folder() + "/" + name);
    std::ofstream(home_.taken_folder() + "/" + name + "/command") << command;
  }
  [[nodiscard]] Ended without_desktop(const Words& arguments) const {
    Words command{"env", "-u", "DISPLAY", QUOLL_COMPOSE};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, home_.bus.environment());
  }
};

TEST_F(Resuming, ARunWithoutADesktopLeavesWhatWaitsForOne) {
  add_waiting("20200101-000000", "quoll://compose?subject=waits");
  EXPECT_EQ(without_desktop({"quoll://compose?subject=own"}).status, 0);
  EXPECT_EQ(home_.taken().size(), 1U);
  EXPECT_EQ(home_.drafts().size(), 1U);
  EXPECT_EQ(compose({"quoll://compose?subject=other"}).status, 0);
  EXPECT_TRUE(home_.taken().empty());
  EXPECT_EQ(home_.drafts().size(), 3U);
}

TEST_F(Resuming, AServiceWithoutADesktopLeavesItToo) {
  add_waiting("20200101-000000", "quoll://compose?subject=waits");
  const Words service{"--service", "--idle", "0"};
  EXPECT_EQ(without_desktop(service).status, 0);
  EXPECT_EQ(home_.taken().size(), 1U);
  EXPECT_EQ(home_.compose(service).status, 0);
  EXPECT_TRUE(home_.taken().empty());
}

TEST_F(Resuming, APersonCanHaveItWrittenWithoutADesktop) {
  add_waiting("20200101-000000", "quoll://compose?subject=waits");
  EXPECT_EQ(without_desktop({"--resume"}).status, 0);
  EXPECT_TRUE(home_.taken().empty());
  EXPECT_EQ(home_.drafts().size(), 1U);
}

TEST_F(Resuming, TheExitStatusIsAboutTheDraftsOfTheRun) {
  add_waiting("20200101-000000", "this is no command");
  EXPECT_EQ(compose({"quoll://compose?subject=own"}).status, 0);
  EXPECT_TRUE(holds(home_.compose({"--list"}).output, "  set aside: ")) << "it was tried";
  add_waiting("20200101-000001", "this is no command");
  EXPECT_EQ(home_.compose({"--resume"}).status, 1);
}

}  // namespace
}  // namespace quoll::test
