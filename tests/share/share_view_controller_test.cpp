#include "quoll/share/share_view_controller.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tests/share/scripted_share.h"
#include "tests/support/failing_files.h"

namespace quoll {
namespace {

using foundation::NSURL;
using test::item;
using test::provider;
using Opened = test::RecordingWorkspace::Opened;

std::shared_ptr<test::ScriptedContext> share(test::ShareTest& on,
                                             platform::NSExtensionContext::Items items,
                                             test::Events* events = nullptr) {
  auto context = std::make_shared<test::ScriptedContext>(std::move(items), events);
  {
    ShareViewController controller;
    controller.set_extension_context(context);
    EXPECT_NE(controller.view(), nullptr);
  }  // the work outlives the controller
  on.queue->wait();
  return context;
}

TEST(ShareViewController, EndsWithTheComposeWindowInTheForeground) {
  test::ShareTest desktop;
  const std::string path = desktop.folder.write("a b.txt", "content");
  share(desktop, {item({provider("public.url", NSURL::URLWithString("http://a/")),
                        provider("public.file-url", NSURL::file_url(path, false))},
                       "Title")});
  const std::string encoded_folder = [&] {
    std::string text = desktop.staging();
    for (std::size_t at = 0; (at = text.find('/', at)) != std::string::npos; at += 3) {
      text.replace(at, 1, "%2F");
    }
    return text;
  }();
  EXPECT_EQ(desktop.workspace->opened(),
            std::vector<Opened>({{{"quoll://compose?htmlBody=%3Ca%20href%3D%22http%3A%2F%2Fa%2F%22%"
                                   "3Ehttp%3A%2F%2Fa%2F%3C%2Fa%3E&subject=Title&attachment_0=" +
                                   encoded_folder + "%2Fa%20b.txt"},
                                  "it.vorlent.quoll2",
                                  platform::NSWorkspaceLaunchAllowingClassicStartup}}));
}

TEST(ShareViewController, CancelsTheRequestBeforeAnythingIsLoaded) {
  test::ShareTest desktop;
  test::Events events;
  const auto asked = std::make_shared<test::ScriptedProvider>(
      "public.url", [](const auto& handler) { handler(NSURL::URLWithString("http://a"), {}); },
      &events);
  const auto context = share(desktop, {item({asked})}, &events);
  EXPECT_EQ(events.all(), (std::vector<std::string>{"cancel", "load public.url"}));
  ASSERT_EQ(context->cancelled.size(), 1U);
  EXPECT_EQ(context->cancelled[0].domain, "NSCocoaErrorDomain");
  EXPECT_EQ(context->cancelled[0].code, 3072);
  EXPECT_TRUE(context->cancelled[0].text.empty());
  EXPECT_TRUE(context->cancelled[0].user_info.empty()) << "no user information";
  EXPECT_TRUE(context->completed.empty()) << "never completed";
}

/// Notes that a block came and keeps it.
class NotingQueue final : public platform::Queue {
 public:
  explicit NotingQueue(test::Events& events) : events_(events) {}
  void async(platform::QueuePriority priority, std::function<void()> block) override {
    events_.add("dispatch");
    held_.async(priority, std::move(block));
  }
  void run() { held_.run(); }

 private:
  test::Events& events_;
  test::HeldQueue held_;
};

TEST(ShareViewController, LoadsItsViewInFourSteps) {
  test::ShareTest desktop;
  test::Events events;
  using Operation = test::FailingFiles::Operation;
  const auto files = std::make_shared<test::FailingFiles>(posix::make_file_manager());
  files->at_call = [&](Operation operation) {
    if (operation != Operation::kContainer) {
      events.add(operation == Operation::kRemove            ? "remove"
                 : operation == Operation::kCreateDirectory ? "create"
                                                            : "another call");
    }
  };
  const auto queue = std::make_shared<NotingQueue>(events);
  platform::Desktop noting = *platform::current_desktop();
  noting.files = files;
  noting.queue = queue;
  const platform::ScopedDesktop scoped(std::move(noting));
  const auto asked = std::make_shared<test::ScriptedProvider>(
      "public.url", [](const auto& handler) { handler(NSURL::URLWithString("http://a"), {}); },
      &events);
  const auto context = std::make_shared<test::ScriptedContext>(
      platform::NSExtensionContext::Items{item({asked})}, &events);
  ShareViewController controller;
  controller.set_extension_context(context);
  context->at_cancel = [&] {
    if (context->cancelled.size() == 1) {
      // A view that was not made yet would be loaded here, from the first step on.
      EXPECT_NE(controller.view(), nullptr);
    }
  };
  EXPECT_NE(controller.view(), nullptr);
  EXPECT_EQ(events.all(), (std::vector<std::string>{"remove", "create", "cancel", "dispatch"}));
  queue->run();
  EXPECT_EQ(events.all().back(), "load public.url");
  EXPECT_EQ(events.all().size(), 5U);
}

TEST(ShareViewController, EmptiesTheStagingFolderBeforeItsViewIsMade) {
  test::ShareTest desktop;
  const auto files = std::make_shared<test::FailingFiles>(posix::make_file_manager());
  int removals = 0;
  files->at_call = [&](test::FailingFiles::Operation operation) {
    if (operation == test::FailingFiles::Operation::kRemove && ++removals == 1) {
      throw std::runtime_error("the view is not loaded");
    }
  };
  platform::Desktop failing = *platform::current_desktop();
  failing.files = files;
  failing.queue = std::make_shared<test::HeldQueue>();
  const platform::ScopedDesktop scoped(std::move(failing));
  ShareViewController controller;
  EXPECT_THROW(controller.view(), std::runtime_error);
  EXPECT_NE(controller.view(), nullptr);
  EXPECT_EQ(removals, 2) << "a view that was made already is not loaded again";
}

TEST(ShareViewController, EmptiesTheStagingFolderFirst) {
  test::ShareTest desktop;
  std::filesystem::create_directories(desktop.staging() + "/old");
  std::ofstream(desktop.staging() + "/old/left.txt") << "left";
  share(desktop, {});
  EXPECT_TRUE(std::filesystem::is_empty(desktop.staging()));
  EXPECT_TRUE(desktop.log->lines().empty());
}

TEST(ShareViewController, ShareOfNothingOpensAnEmptyDraft) {
  test::ShareTest desktop;
  share(desktop, {});
  EXPECT_EQ(desktop.workspace->opened(),
            std::vector<Opened>({{{"quoll://compose?"},
                                  "it.vorlent.quoll2",
                                  platform::NSWorkspaceLaunchAllowingClassicStartup}}));
  EXPECT_EQ(desktop.clock->sleeps().size(), 1U);
}

TEST(ShareViewController, SendReturnsOneEmptyItem) {
  ShareViewController controller;
  const auto context = std::make_shared<test::ScriptedContext>();
  controller.set_extension_context(context);
  controller.send(nullptr);
  ASSERT_EQ(context->completed.size(), 1U);
  ASSERT_EQ(context->completed[0].size(), 1U);
  const auto& returned = context->completed[0][0];
  EXPECT_EQ(returned->attributedTitle(), nullptr);
  EXPECT_EQ(returned->attributedContentText(), nullptr);
  EXPECT_TRUE(returned->attachments().empty());
  EXPECT_FALSE(context->handler_given);
  EXPECT_TRUE(context->cancelled.empty());
}

TEST(ShareViewController, WithoutARequestItDoesNothing) {
  ShareViewController controller;
  controller.send(nullptr);
  controller.cancel(nullptr);
  EXPECT_EQ(controller.nibName(), "ShareViewController");
}

TEST(OpenComposeWindow, LogsAnErrorAndOpensNothing) {
  test::ShareTest desktop;
  ShareViewController::open_compose_window(ExtensionMessage::make(),
                                           foundation::Error{"D", 1, "why", {}});
  EXPECT_EQ(desktop.log->lines(),
            std::vector<std::string>{"ShareFull Error Domain=D Code=1 \"why\""});
  EXPECT_TRUE(desktop.workspace->opened().empty());
}

TEST(OpenComposeWindow, EndsSilentlyWithoutAMessage) {
  test::ShareTest desktop;
  ShareViewController::open_compose_window(nullptr, std::nullopt);
  EXPECT_TRUE(desktop.log->lines().empty());
  EXPECT_TRUE(desktop.workspace->opened().empty());
}

TEST(ShareViewController, LogsTheTwoLinesOfAFirstShare) {
  test::ShareTest desktop;
  share(desktop, {});
  const auto lines = desktop.log->lines();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_TRUE(lines[0].starts_with("shareInit delete Error Domain=NSCocoaErrorDomain Code=4 "));
  EXPECT_EQ("shareInit create " + lines[0].substr(17), lines[1]) << "the same error twice";
}

TEST(ShareViewController, GoesOnWithoutAContainer) {
  test::ShareTest desktop;
  const platform::ScopedDesktop bare({.bundle = std::make_shared<test::FixedBundle>("x"),
                                      .workspace = desktop.workspace,
                                      .log = desktop.log,
                                      .queue = desktop.queue,
                                      .clock = desktop.clock});
  share(desktop, {item({provider("public.url", NSURL::URLWithString("http://a"))})});
  ASSERT_EQ(desktop.workspace->opened().size(), 1U);
  EXPECT_EQ(desktop.workspace->opened()[0].application, "it.vorlent.quoll");
  ASSERT_EQ(desktop.log->lines().size(), 1U);
  EXPECT_TRUE(desktop.log->lines()[0].starts_with("shareInit Error Domain="));
}

}  // namespace
}  // namespace quoll
