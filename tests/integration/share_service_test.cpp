// What the service is to a desktop: files, the clipboard and a token, and what it shows.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "tests/integration/share_service.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

TEST_F(ShareService, FilesAreOpened) {
  install_receiver();
  const std::string file = write("a b,c.txt", "the content");
  EXPECT_EQ(open({"file://" + home_.bus.path("a%20b,c.txt"), "https://example.org/"}), "");
  const std::string draft = drafts(1);
  EXPECT_NE(draft.find("a b,c.txt"), std::string::npos) << draft;
  EXPECT_NE(draft.find("https://example.org/"), std::string::npos) << draft;
}

TEST_F(ShareService, AFailureOfOpenIsShown) {
  Process desktop({NOTIFICATION_DOUBLE}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  EXPECT_EQ(open({"/nowhere"}), "");
  EXPECT_EQ(desktop.read_line(), "Nothing was shared|Left out: /nowhere: no such file");
}

class ShareServiceWithJournal : public ShareService {
 protected:
  ShareServiceWithJournal() : ShareService("0.2", "journal") {}
};

TEST_F(ShareServiceWithJournal, AFailureOfOpenIsKept) {
  Process desktop({NOTIFICATION_DOUBLE}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  EXPECT_EQ(open({"/nowhere"}), "");
  EXPECT_NE(desktop.read_line(), "");
  std::ifstream journal(home_.bus.path("journal"));
  const std::string kept((std::istreambuf_iterator<char>(journal)), {});
  EXPECT_EQ(kept,
            "left out: /nowhere: no such file\n"
            "not opened: nothing that was given can be shared; see to the reasons above and share "
            "again\n");
}

TEST_F(ShareService, StartedByItselfItSharesTheClipboard) {
  Process desktop({NOTIFICATION_DOUBLE}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  const auto call = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"gdbus", "call", "--session", "--dest", kName,
                                         "--object-path", kPath, "--method"});
    return run(arguments, home_.bus.environment());
  };
  const std::string told =
      "Nothing was shared|The clipboard: there is no display, and so no clipboard; "
      "copy "
      "it again, or share the file";
  EXPECT_EQ(call({"org.freedesktop.Application.Activate", "{}"}).status, 0);
  EXPECT_EQ(desktop.read_line(), told);
  const std::string action = "org.freedesktop.Application.ActivateAction";
  EXPECT_EQ(call({action, "share-clipboard", "[]", "{}"}).status, 0);
  EXPECT_EQ(desktop.read_line(), told);
  const Ended other = call({action, "delete-everything", "[]", "{}"});
  EXPECT_NE(other.errors.find("the only action is share-clipboard"), std::string::npos);
}

TEST_F(ShareService, WhatIsLeftOutOfOpenIsShown) {
  home_.bus.add_service(kReceiver, std::string(RECEIVER_DOUBLE) + " bus " + kReceiver + " record " +
                                       home_.bus.path("record"));  // it shows nothing itself
  Process desktop({NOTIFICATION_DOUBLE}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  EXPECT_EQ(open({"https://example.org/", "/nowhere"}), "");
  EXPECT_EQ(desktop.read_line(), "Not everything is in the draft|Left out: /nowhere: no such file");
  EXPECT_EQ(open({"https://example.org/"}), "");
  EXPECT_EQ(open({"/nowhere/else"}), "");
  EXPECT_EQ(desktop.read_line(), "Nothing was shared|Left out: /nowhere/else: no such file")
      << "the one before it arrived whole";
}

TEST_F(ShareService, OpenHasItsLimits) {
  EXPECT_EQ(open({}), "there is nothing to share");
  EXPECT_EQ(open(std::vector<std::string>(20'001, "a:b")),
            "20001 links and files, and 20000 are the most");
}

TEST_F(ShareService, TheTokenReachesTheMailApplication) {
  const std::string record = home_.bus.path("record");
  home_.bus.add_service(kReceiver,
                        std::string(RECEIVER_DOUBLE) + " bus " + kReceiver + " record " + record);
  EXPECT_EQ(open({"https://example.org/"}, "a token"), "");
  while (!std::filesystem::exists(record)) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_NE(read_file(record).find("activation-token a token\n"), std::string::npos)
      << read_file(record);
  std::filesystem::remove(record);
  Request request;
  EXPECT_EQ(share(request.text("text", "words").text("desktop-startup-id", "an id")).code, 0);
  EXPECT_NE(read_file(record).find("desktop-startup-id an id\n"), std::string::npos)
      << read_file(record);
  EXPECT_EQ(read_file(record).find("activation-token"), std::string::npos);
}

TEST_F(ShareService, TheInterfaceIsDescribedOnTheBus) {
  const Ended ended =
      run({"gdbus", "introspect", "--session", "--dest", kName, "--object-path", kPath},
          home_.bus.environment());
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_NE(ended.output.find("Share(in  a{sv} request,"), std::string::npos) << ended.output;
}

TEST_F(ShareService, WithoutABusItSaysSo) {
  Environment environment = home_.bus.environment();
  environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
  const Ended ended = run({QUOLL_SHARE_SERVICE}, environment);
  EXPECT_EQ(ended.status, 1);
  EXPECT_NE(ended.errors.find("quoll-share-service: there is no session bus"), std::string::npos);
  EXPECT_EQ(run({QUOLL_SHARE_SERVICE, "--idle", "x"}, environment).status, 2);
}

}  // namespace
}  // namespace quoll::test
