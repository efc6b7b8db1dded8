#include "apps/share/run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <latch>
#include <thread>

#include "apps/share/report.h"
#include "quoll/linux/posix/unique_fd.h"
#include "quoll/message/extension_message.h"
#include "quoll/platform/desktop.h"
#include "quoll/platform/type_identifiers.h"
#include "quoll/recording/recording_ports.h"
#include "quoll/share/share_view_controller.h"
#include "tests/host/folder_files.h"
#include "tests/support/recorders.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/thread_coordinator.h"

namespace quoll::share {
namespace {

using foundation::NSURL;

class Run : public testing::Test {
 protected:
  Run()
      : desktop_({.files = std::make_shared<recording::RecordingFiles>(
                      std::make_shared<test::FolderFiles>(folder_.path())),
                  .coordinator = test::thread_coordinators(),
                  .workspace = std::make_shared<recording::RecordingWorkspace>(workspace_),
                  .log = std::make_shared<recording::RecordingLog>(log_),
                  .queue = queue_,
                  .clock = std::make_shared<test::HeldClock>(
                      [](int) { std::this_thread::sleep_for(std::chrono::milliseconds(5)); })}) {}
  ~Run() override { threads_->wait(); }

  ExitCode report_of(const Selection& selection, const std::vector<recording::Event>& events) {
    std::ostringstream out;
    const ShareResult result = result_of(selection, events);
    report(result, out);
    told_ = out.str();
    return result.code();
  }

  test::TemporaryFolder folder_;
  std::shared_ptr<test::ThreadQueue> threads_ = std::make_shared<test::ThreadQueue>();
  std::shared_ptr<CountingQueue> queue_ =
      std::make_shared<CountingQueue>(std::make_shared<recording::RecordingQueue>(threads_));
  std::shared_ptr<test::RecordingLog> log_ = std::make_shared<test::RecordingLog>();
  std::shared_ptr<test::RecordingWorkspace> workspace_ =
      std::make_shared<test::RecordingWorkspace>();
  platform::ScopedDesktop desktop_;
  std::string told_;
};

TEST_F(Run, AWholeShareIsSilent) {
  Selection selection = make_selection(
      {"A title", "Text", {}, {folder_.write("a.txt", "x"), "https://example.org/"}}, std::nullopt);
  selection.text.reset();  // the empty desktop turns no text to HTML
  EXPECT_EQ(report_of(selection, run<ShareViewController>(selection, *queue_)), ExitCode::kOpened);
  EXPECT_EQ(told_, "");
  const auto message = ExtensionMessage::ExtensionMessageWithUrl(
      NSURL::URLWithString(workspace_->opened().at(0).urls.at(0)));
  EXPECT_EQ(message->subject(), foundation::Value("A title"));
  EXPECT_EQ(message->attachments().count(), 1U);
}

TEST_F(Run, EverySelectedItemThatIsNotInTheDraftIsNamed) {
  const std::string vanishing = folder_.write("vanishing.txt", "x");
  Selection selection =
      make_selection({{}, {}, {}, {"/missing", vanishing, "https://example.org/"}}, std::nullopt);
  selection.items.push_back(
      std::make_shared<SharedItem>("picture", platform::kUTTypeImage, foundation::Value("text")));
  std::filesystem::remove(vanishing);
  EXPECT_EQ(report_of(selection, run<ShareViewController>(selection, *queue_)),
            ExitCode::kSomethingLeftOut);
  EXPECT_EQ(told_, "left out: /missing: no such file\nleft out: " + vanishing +
                       ": no such file or directory\nleft out: picture: not an image: a text\n");
}

TEST_F(Run, NothingToShareAsksForNothing) {
  Selection selection = make_selection({"A title", {}, {}, {"/missing"}}, std::nullopt);
  EXPECT_EQ(report_of(selection, run<ShareViewController>(selection, *queue_)),
            ExitCode::kNotOpened);
  EXPECT_EQ(told_,
            "left out: /missing: no such file\n"
            "not opened: nothing that was given can be shared; see to the reasons above and share "
            "again\n");
  EXPECT_TRUE(workspace_->opened().empty());
  EXPECT_TRUE(log_->lines().empty()) << "the staging folder was not touched";
}

TEST_F(Run, HtmlThatCannotBeReadIsLeftOut) {
  Selection selection =
      make_selection({{}, {}, "<b>x</b>", {"https://example.org/"}}, std::nullopt);
  EXPECT_EQ(report_of(selection, run<ShareViewController>(selection, *queue_)),
            ExitCode::kSomethingLeftOut);
  EXPECT_EQ(told_, "left out: the HTML text: it cannot be read as HTML\n");
}

/// A terminal that stands in the place of this process's standard error.
class TerminalForErrors {
 public:
  TerminalForErrors()
      : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)), before_(::dup(STDERR_FILENO)) {
    if (::grantpt(master_.get()) != 0 || ::unlockpt(master_.get()) != 0) {
      throw std::runtime_error("no terminal");
    }
    const posix::UniqueFd slave(::open(::ptsname(master_.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    ::dup2(slave.get(), STDERR_FILENO);
  }
  TerminalForErrors(const TerminalForErrors&) = delete;
  TerminalForErrors& operator=(const TerminalForErrors&) = delete;
  ~TerminalForErrors() { ::dup2(before_.get(), STDERR_FILENO); }

  /// What is shown, up to and including `last`.
  std::string read_until(std::string_view last) {
    std::string shown;
    char buffer[256];
    while (!shown.ends_with(last)) {
      const ssize_t count = ::read(master_.get(), buffer, 1);
      if (count <= 0) {
        break;
      }
      shown.append(buffer, static_cast<std::size_t>(count));
    }
    return shown;
  }

 private:
  posix::UniqueFd master_;
  posix::UniqueFd before_;
};

TEST_F(Run, AShareOfMoreThanASecondShowsItsProgress) {
  const Selection selection =
      make_selection({{}, {}, {}, {"https://a/", "https://b/"}}, std::nullopt);
  selection.items[0]->loadItemForTypeIdentifier(platform::kUTTypeURL,
                                                [](const auto&, const auto&) {});
  while (selection.items[0]->state() != SharedItem::State::kAnswered) {
    std::this_thread::yield();
  }
  std::latch seen(1);
  std::string shown;
  std::string cleared;
  {
    TerminalForErrors terminal;
    queue_->async(platform::QueuePriority::kBackground, [&] { seen.wait(); });
    std::thread reader([&] {
      shown = terminal.read_until("items");
      seen.count_down();
      cleared = terminal.read_until("\033[K");
    });
    wait_until_done(selection, *queue_);
    reader.join();
  }
  EXPECT_EQ(shown, "\r1 of 2 items");
  EXPECT_TRUE(cleared.ends_with("\r\033[K")) << "nothing of it stays";
}

}  // namespace
}  // namespace quoll::share
