// How much the receiver shows, logs and takes.
#include <gtest/gtest.h>

#include <fstream>

#include "apps/compose/taker.h"
#include "quoll/linux/posix/files.h"
#include "quoll/platform/desktop.h"
#include "tests/integration/receiver_home.h"
#include "tests/support/recorders.h"

namespace quoll::test {
namespace {

std::string shown(const ReceiverHome& home, const std::string& text) {
  EXPECT_EQ(home.compose({"quoll://compose?plainBody=" + foundation::percent_encode(text)}).status,
            0);
  return home.compose({"--show"}).output;
}

TEST(ComposeLimits, TwelveLinesOfATextAreShown) {
  const ReceiverHome home;
  std::string text;
  for (int line = 1; line <= 12; ++line) {
    text += "line" + std::to_string(line) + "\n";
  }
  const std::string whole = shown(home, text);
  EXPECT_NE(whole.find("  line12\n"), std::string::npos) << whole;
  EXPECT_EQ(whole.find("..."), std::string::npos) << whole;
  const std::string cut = shown(home, text + "line13\n");
  EXPECT_NE(cut.find("  line12\n  ...\n"), std::string::npos) << cut;
}

TEST(ComposeLimits, FourHundredBytesOfALineAreShown) {
  const ReceiverHome home;
  const std::string longest(400, 'x');
  EXPECT_NE(shown(home, longest).find("  " + longest + "\n"), std::string::npos);
  EXPECT_NE(shown(home, longest + "x").find("  " + longest + "...\n"), std::string::npos);
}

TEST(ComposeLimits, TwentyFilesThatAreLeftOutAreLoggedByName) {
  const ReceiverHome home;
  const ScopedEnvironment environment(home.bus.environment());
  const auto lines_for = [](int files) {
    const auto log = std::make_shared<RecordingLog>();
    const platform::ScopedDesktop desktop(
        {.bundle = std::make_shared<FixedBundle>("it.vorlent.quoll2"),
         .files = posix::make_file_manager(),
         .log = log});
    const std::vector<std::string> paths(static_cast<std::size_t>(files), "/etc/hostname");
    static_cast<void>(compose::take({ReceiverHome::url(paths)}));
    return log->lines();
  };
  EXPECT_EQ(lines_for(20).size(), 20U);
  const auto lines = lines_for(2000);
  ASSERT_EQ(lines.size(), 21U);
  EXPECT_EQ(lines.back(), "left out 1980 more");
}

TEST(ComposeLimits, ASubjectIsLookedForInTheFirst64KiB) {
  const ReceiverHome home;
  const auto listed = [&](std::size_t before) {
    std::filesystem::create_directories(home.drafts_folder());
    std::ofstream(home.drafts_folder() + "/20200101-000000.eml")
        << "X-Long: " << std::string(before - 9, 'x') << "\nSubject: found\n\n";
    return home.compose({"--list"}).output.find("found") != std::string::npos;
  };
  EXPECT_TRUE(listed(65536 - 20));
  EXPECT_FALSE(listed(65536));
}

}  // namespace
}  // namespace quoll::test
