// What the clipboard holds, by the programs that read it: real ones on a display of the test's own,
// and doubles that offer what no program offers at a time, or do not answer.
#include "apps/share/request/clipboard.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "apps/share/request/data_url.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "tests/integration/share_home.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;
using foundation::Value;

std::string file_name(std::string type) {
  std::replace(type.begin(), type.end(), '/', '@');
  return type;
}

/// A folder with a program that answers as `xclip` and `wl-paste` do.
class Tools {
 public:
  explicit Tools(const std::string& name) : name_(name) {
    folder_.write(name, R"sh(#!/bin/sh
[ -e "$(dirname "$0")/script" ] && . "$(dirname "$0")/script"
for type; do :; done
case $type in
  TARGETS | --list-types) cd "$(dirname "$0")/types" && ls | tr @ / ;;
  *) cat "$(dirname "$0")/types/$(echo "$type" | tr / @)" ;;
esac
)sh");
    std::filesystem::permissions(folder_.path(name), std::filesystem::perms::owner_all);
    std::filesystem::create_directory(folder_.path("types"));
  }
  void offer(const std::string& type, const std::string& bytes) const {
    folder_.write("types/" + file_name(type), bytes);
  }
  void forget() const {
    std::filesystem::remove_all(folder_.path("types"));
    std::filesystem::create_directory(folder_.path("types"));
  }
  /// Lets it do this first.
  void behave(const std::string& script) const { folder_.write("script", script + "\n"); }
  [[nodiscard]] Environment environment() const {
    const bool is_wayland = name_ == "wl-paste";
    return {
        {"PATH", folder_.path() + ":" + std::getenv("PATH")},
        {"DISPLAY", is_wayland ? std::nullopt : std::optional<std::string>(":99999")},
        {"WAYLAND_DISPLAY", is_wayland ? std::optional<std::string>("wayland-0") : std::nullopt}};
  }

 private:
  TemporaryFolder folder_;
  std::string name_;
};

/// What is asked for, in one line.
std::string described(const share::ShareRequest& request) {
  std::string all;
  for (const std::string& item : request.items) {
    all += "item " + item + ";";
  }
  for (const share::DescriptorItem& item : request.descriptor_items) {
    all +=
        item.media_type + " of " + std::to_string(lseek(item.descriptor.get(), 0, SEEK_END)) + ";";
  }
  all += request.html ? "html " + *request.html + ";" : "";
  all += request.text ? "text " + *request.text + ";" : "";
  return all;
}

/// What comes of reading it: what is asked for then, or why nothing is.
std::string read_by(const Tools& tools, const share::ClipboardTime& time = {60s, 600s}) {
  const ScopedEnvironment environment(tools.environment());
  share::ShareRequest request;
  const auto trouble = share::add_clipboard(request, time);
  return trouble ? trouble->why : described(request);
}

TEST(Clipboard, FilesThenPictureThenStyledThenPlainText) {
  for (const char* name : {"xclip", "wl-paste"}) {
    const Tools tools(name);
    EXPECT_EQ(read_by(tools), "it is empty") << name;
    tools.offer("TIMESTAMP", "1");
    EXPECT_EQ(read_by(tools), "it holds nothing that can be shared") << name;
    tools.offer("text/plain", "plain");
    EXPECT_EQ(read_by(tools), "text plain;") << name;
    tools.offer("text/html", "<b>styled</b>");
    EXPECT_EQ(read_by(tools), "html <b>styled</b>;") << name;
    tools.offer("image/png", "12345");
    EXPECT_EQ(read_by(tools), "image/png of 5;") << name;
    tools.offer("text/uri-list", "file:///a\r\n");
    EXPECT_EQ(read_by(tools), "item file:///a;") << name;
    tools.offer("x-special/mate-copied-files", "cut\nfile:///b");
    EXPECT_EQ(read_by(tools), "item file:///b;") << name;
    tools.offer("x-special/gnome-copied-files", "copy\nfile:///c\nfile:///d");
    EXPECT_EQ(read_by(tools), "item file:///c;item file:///d;") << name;
  }
}

TEST(Clipboard, WhatIsEmptyGivesWayToTheNext) {
  const Tools tools("xclip");
  tools.offer("text/uri-list", "# nothing\r\n");
  tools.offer("image/png", "");
  tools.offer("text/html", "");
  tools.offer("UTF8_STRING", "plain");
  EXPECT_EQ(read_by(tools), "text plain;");
}

TEST(Clipboard, ALoneDashIsNotStandardInput) {
  const Tools tools("xclip");
  tools.offer("UTF8_STRING", "-");
  EXPECT_EQ(read_by(tools), "text - ;");
}

TEST(Clipboard, ToolsInTrouble) {
  struct Row {
    const char* tool;
    const char* script;
    const char* reason;
  };
  const Row rows[] = {
      {"xclip", "echo 'Error: target TARGETS not available' >&2; exit 1", "it is empty"},
      {"wl-paste", "echo 'Nothing is copied' >&2; exit 1", "it is empty"},
      {"xclip", "printf 'no\\033 display\\nmore' >&2; exit 1", "xclip says: no\\x1B display"},
      {"xclip", "kill -9 $$", "xclip failed"},
      {"xclip", "exec yes", "what it holds is too long"},
  };
  for (const Row& row : rows) {
    const Tools tools(row.tool);
    tools.behave(row.script);
    EXPECT_EQ(read_by(tools), row.reason) << row.script;
  }
}

constexpr const char* kGivenUp = "the program that holds it does not answer";

TEST(Clipboard, AnOwnerThatDoesNotAnswerIsGivenUp) {
  const Tools tools("xclip");
  tools.offer("text/html", "x");
  tools.behave("sleep 2");
  EXPECT_EQ(read_by(tools, {50ms, 600s}), kGivenUp);
  tools.behave("[ \"$5\" = text/html ] && exec sleep 1000");
  EXPECT_EQ(read_by(tools, {300ms, 600s}), kGivenUp);
}

TEST(Clipboard, AnOwnerThatDeliversAByteNowAndThenIsGivenUp) {
  const Tools tools("wl-paste");
  tools.offer("text/html", "x");
  tools.behave("[ \"$3\" = text/html ] && for i in 1 2 3 4 5 6 7 8 9; do echo; sleep 0.2; done");
  EXPECT_EQ(read_by(tools, {60s, 500ms}), kGivenUp);
}

// A compositor has the list, so no owner is to blame; Plasma's says nothing before the first copy.
TEST(Clipboard, ACompositorThatListsNothingIsTold) {
  const Tools tools("wl-paste");
  tools.behave("exec sleep 1000");
  EXPECT_EQ(read_by(tools, {300ms, 600s}), "it is empty, or the desktop does not show it");
}

TEST(Clipboard, AToolThatClosesItsOutputAndStaysIsGivenUp) {
  const Tools tools("xclip");
  tools.offer("text/html", "x");
  tools.behave("echo text/html; exec >&-; exec sleep 1000");
  EXPECT_EQ(read_by(tools, {300ms, 1000s}), kGivenUp);
}

// `wl-paste` leaves it to a child to wait for the owner.
TEST(Clipboard, NothingOfTheToolStays) {
  const Tools tools("wl-paste");
  const TemporaryFolder folder;
  const std::string held = folder.path("held");
  ASSERT_EQ(mkfifo(held.c_str(), 0600), 0);
  const posix::UniqueFd reading(open(held.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  tools.behave("exec 3>'" + held + "'; (echo begun; sleep 10; echo stayed) >&3 & exec yes");
  EXPECT_EQ(read_by(tools), "what it holds is too long");
  std::string written;
  bool ended = false;
  ASSERT_TRUE(posix::read_until(reading.get(), written, 100, ended, 60s)) << "nobody holds it";
  EXPECT_EQ(written.find("stayed"), std::string::npos);
}

TEST(Clipboard, WithoutADisplayOrATool) {
  const Tools tools("xclip");
  Environment environment = tools.environment();
  environment["DISPLAY"] = "";
  share::ShareRequest request;
  {
    const ScopedEnvironment none(environment);
    EXPECT_EQ(share::add_clipboard(request)->why, "there is no display, and so no clipboard");
  }
  environment["DISPLAY"] = ":99999";
  environment["PATH"] = "/nowhere";
  const ScopedEnvironment missing(environment);
  EXPECT_EQ(share::add_clipboard(request)->why, "xclip could not be started; install xclip");
}

// A display on the other side of a program that cannot reach it is asked by the other program.
TEST(Clipboard, XIsAskedWhereWaylandCannotBe) {
  const Tools wayland("wl-paste");
  wayland.behave("echo 'Failed to connect to a Wayland server' >&2; exit 1");
  const Tools x("xclip");
  x.offer("UTF8_STRING", "by X");
  const ScopedEnvironment first(x.environment());
  const ScopedEnvironment both(
      {{"WAYLAND_DISPLAY", "wayland-0"}, {"PATH", *wayland.environment()["PATH"]}});
  share::ShareRequest request;
  EXPECT_FALSE(share::add_clipboard(request).has_value());
  EXPECT_EQ(request.text, "by X");
}

/// A display with nothing on it, and a home to share from.
class RealClipboard : public testing::Test {
 protected:
  RealClipboard() {
    home_.environment()["DISPLAY"] = ":" + display_.read_line();
    home_.environment()["WAYLAND_DISPLAY"] = std::nullopt;
  }
  /// Puts it into the clipboard, where a process of its own holds it until the display ends.
  void copy(const std::string& type, const std::string& bytes) const {
    const std::string file = home_.write("copied", bytes);
    EXPECT_EQ(run({"sh", "-c", "exec xclip -selection clipboard -t \"$0\" \"$1\" >/dev/null 2>&1",
                   type, file},
                  home_.environment())
                  .status,
              0);
  }
  [[nodiscard]] Ended share() const { return home_.print({"--clipboard", "--title", "A title"}); }

  mutable ShareHome home_;
  Process display_{{"Xvfb", "-displayfd", "1", "-screen", "0", "64x64x24", "-nolisten", "tcp"}};
};

TEST_F(RealClipboard, IsEmptyAtFirst) {
  const Ended ended = share();
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors,
            "not opened: the clipboard: it is empty; copy it again, or share the file\n");
}

TEST_F(RealClipboard, HoldsWhatABrowserCopies) {
  copy("text/html",
       "<meta http-equiv=\"content-type\" content=\"text/html; charset=utf-8\">gr\xC3\xBC\xC3\x9F "
       "<b>bold</b>");
  const Ended ended = share();
  EXPECT_EQ(ended.status, 0) << ended.errors;
  const std::string body = message_of(ended.output)->htmlBody().description();
  EXPECT_NE(body.find("gr\xC3\xBC\xC3\x9F <b>bold</b>"), std::string::npos) << body;
}

TEST_F(RealClipboard, LinksOfAPageLeadToTheNetOnly) {
  copy("text/html",
       "<a href='javascript:a()'>a</a> <a href='DATA:text/html,b'>b</a> <a href='file:///c'>c</a> "
       "<a href='https://h/'>d</a>");
  const Ended ended = share();
  EXPECT_EQ(ended.status, 0) << ended.errors;
  const std::string body = message_of(ended.output)->htmlBody().description();
  EXPECT_NE(body.find("<p>a b c <a href=\"https://h/\">d</a></p>"), std::string::npos) << body;
}

TEST_F(RealClipboard, HoldsWhatAFileManagerCopies) {
  const std::string file = home_.write("a b,c.txt", "the content");
  copy("x-special/gnome-copied-files", "copy\nfile://" + home_.path("a%20b,c.txt"));
  const Ended ended = share();
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(attachments_of(ended.output), std::vector<std::string>{home_.staging() + "/a b,c.txt"});
}

TEST_F(RealClipboard, HoldsAPicture) {
  const auto pixel = share::read_data_url(
      "data:;base64,iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+"
      "M9QDwADhgGAWjR9awAA"
      "AABJRU5ErkJggg==");
  copy("image/png", pixel.value().bytes);
  const Ended ended = share();
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(attachments_of(ended.output), std::vector<std::string>{home_.staging() + "/image.png"});
}

TEST_F(RealClipboard, HoldsALongText) {
  copy("UTF8_STRING", std::string(2'000'000, 'a') + "end");
  const Ended ended = share();
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_NE(ended.output.find("aend"), std::string::npos);
}

TEST_F(RealClipboard, ADisplayThatIsGone) {
  home_.environment()["DISPLAY"] = ":99999";
  const Ended ended = share();
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors,
            "not opened: the clipboard: xclip says: Error: Can't open display: :99999; copy it "
            "again, or share the file\n");
}

TEST_F(RealClipboard, IsSharedAlone) {
  EXPECT_EQ(home_.print({"--clipboard", "https://example.org/"}).status, 2);
  EXPECT_EQ(home_.print({"--clipboard", "--text", "x"}).status, 2);
}

}  // namespace
}  // namespace quoll::test
