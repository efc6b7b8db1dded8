// The whole program, with the command printed instead of opened.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "apps/sandbox/sanitizer_build.h"
#include "quoll/linux/posix/unique_fd.h"
#include "tests/integration/mixed_files.h"
#include "tests/integration/share_home.h"

namespace quoll::test {
namespace {

using foundation::Value;

constexpr std::string_view kOnePixel(
    "GIF89a\1\0\1\0\x80\0\0\0\0\0\xFF\xFF\xFF\x2C\0\0\0\0\1\0\1\0\0\2\2\x44\1\0\x3B", 35);

class Share : public testing::Test {
 protected:
  ShareHome home_;
};

TEST_F(Share, ALinkWithATitle) {
  const Ended ended = home_.print({"--title", "A title", "https://example.org/a?b=c#d"});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(ended.errors, "");
  const auto message = message_of(ended.output);
  EXPECT_EQ(message->subject(), Value("A title"));
  EXPECT_EQ(message->htmlBody(),
            Value("<a href=\"https://example.org/a?b=c#d\">https://example.org/a?b=c#d</a>"));
}

TEST_F(Share, WhatWasSaidOfTheDraftIsInIt) {
  const std::string file = home_.write("a.txt", "x");
  const Ended ended = home_.print({"--to", "a@x", "--cc", "[c,d]@x", file, "--to", "\"B, C\" <b@x>",
                                   "--bcc", "d@x", "--subject", "-s & t"});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(ended.errors, "");
  const auto message = message_of(ended.output);
  EXPECT_EQ(message->subject(), Value("-s & t"));
  EXPECT_EQ(message->toString(), Value("a@x;\"B, C\" <b@x>;"));
  EXPECT_EQ(message->ccString(), Value("[c,d]@x;"));
  EXPECT_EQ(message->bccString(), Value("d@x;"));
  EXPECT_EQ(attachments_of(ended.output).size(), 1U);
}

TEST_F(Share, ATitleIsTheSubjectOfWhateverIsShared) {
  const std::string file = home_.write("a.txt", "x");
  EXPECT_EQ(message_of(home_.print({"--title", "My photos", file}).output)->subject(),
            Value("My photos"));
  const Ended text = home_.print({"--title", "A page", "--text", "A page", "https://h/"});
  EXPECT_EQ(message_of(text.output)->subject(), Value("A page"));
  const Value body = message_of(text.output)->htmlBody();
  EXPECT_NE(body.text()->find(">A page<"), std::string::npos) << "who types a text wants it";
  const Ended both = home_.print({"--title", "T", "--subject", "S", "https://h/"});
  EXPECT_EQ(both.status, 3);
  EXPECT_EQ(both.errors, "left out: the title: the draft has another subject\n");
  EXPECT_EQ(message_of(both.output)->subject(), Value("S"));
  EXPECT_EQ(both.output.find("subject="), both.output.rfind("subject=")) << both.output;
}

TEST_F(Share, ARecipientThatCannotBeCarriedIsRefused) {
  const std::string help = "; see quoll-share --help\n";
  const std::vector<std::pair<std::string, std::string>> rows{
      {"a@x;b@x", "the recipient \"a@x;b@x\": it has a semicolon; give each address by itself"},
      {"a@x\nBcc: b@x",
       "the recipient \"a@x\\nBcc: b@x\": it has a line break or a control character"},
      {"a\x1B@x", "the recipient \"a\\x1B@x\": it has a line break or a control character"},
      {"\xFF@x", "the recipient \"%FF@x\": it is not UTF-8"},
      {"", "the recipient \"\": it is empty"},
      {"-", "a recipient can be - only with --null"},
  };
  for (const auto& [address, why] : rows) {
    for (const char* const option : {"--to", "--cc", "--bcc"}) {
      const Ended ended = home_.print({"https://h/", option, address});
      EXPECT_EQ(ended.status, 2) << why;
      EXPECT_EQ(ended.output, "") << why;
      EXPECT_EQ(ended.errors, "quoll-share: " + why + help);
    }
  }
}

TEST_F(Share, FilesWithAwkwardNames) {
  const std::vector<std::string> names{"a b,c.txt",
                                       "x%20y",
                                       "[a,b]",
                                       "{}",
                                       "%%",
                                       "q?s#f&g=h;i",
                                       "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC",
                                       "it's \"quoted\"",
                                       "line\nbreak",
                                       "back\\slash",
                                       "\1mark",
                                       "-dash"};
  std::vector<std::string> items;
  for (const std::string& name : names) {
    items.push_back(home_.write(name, name));
  }
  const Ended ended = home_.print(items);
  EXPECT_EQ(ended.status, 0) << ended.errors;
  auto staged = attachments_of(ended.output);
  ASSERT_EQ(staged.size(), names.size());
  for (const std::string& name : names) {
    const std::string path = home_.staging() + "/" + name;
    EXPECT_EQ(std::count(staged.begin(), staged.end(), path), 1) << name;
    EXPECT_EQ(read_file(path), name);
  }
}

TEST_F(Share, FilesArriveInTheOrderInWhichTheyWerePicked) {
  const auto picked = write_mixed_files(home_.path(""));
  for (int time = 0; time < order_trials(); ++time) {
    const Ended ended = home_.print(picked);
    ASSERT_EQ(ended.status, 0) << ended.errors;
    ASSERT_EQ(names_of(attachments_of(ended.output)), names_of(picked)) << "time " << time;
  }
}

TEST_F(Share, RelativeNamesAfterTheDashes) {
  home_.write("-x", "1");
  home_.write("[a,b]", "2");
  const Ended ended =
      run({"sh", "-c", "cd \"$HOME\" && exec \"$0\" --print '[a,b]' -- -x", QUOLL_SHARE},
          home_.environment());
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(attachments_of(ended.output).size(), 2U);
}

TEST_F(Share, ANameThatIsNotUtf8) {
  const Ended ended = home_.print({home_.write("bad\xFF.txt", "x")});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(attachments_of(ended.output),
            std::vector<std::string>{home_.staging() + "/bad%FF.txt"});
  EXPECT_EQ(read_file(home_.staging() + "/bad%FF.txt"), "x");
}

TEST_F(Share, AnImageFromStandardInputIsStagedAsPng) {
  const Ended ended = home_.print({"-"}, home_.write("input", std::string(kOnePixel)));
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(attachments_of(ended.output), std::vector<std::string>{home_.staging() + "/image.png"});
  EXPECT_TRUE(read_file(home_.staging() + "/image.png").starts_with("\x89PNG\r\n\x1a\n"));
}

TEST_F(Share, AnImageTakesNothingFromAFileOfAnyName) {
  const std::string notes = home_.write(".quoll-incoming-notes", "notes");
  const Ended ended = home_.print({notes, "-"}, home_.write("input", std::string(kOnePixel)));
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(attachments_of(ended.output).size(), 2U) << ended.output;
  EXPECT_EQ(read_file(home_.staging() + "/.quoll-incoming-notes"), "notes");
  EXPECT_TRUE(read_file(home_.staging() + "/image.png").starts_with("\x89PNG"));
}

TEST_F(Share, WhatAKilledShareLeftIsSwept) {
  const std::string left = home_.container() + "/.incoming/.quoll-incoming-1";
  std::filesystem::create_directories(left + "/1");
  EXPECT_EQ(home_.print({"https://h/"}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(left));
}

TEST_F(Share, ADamagedImageIsLeftOut) {
  const Ended ended = home_.print({"-", "https://h/"}, home_.write("input", "GIF89a"));
  EXPECT_EQ(ended.status, 3);
  EXPECT_TRUE(ended.errors.starts_with("left out: standard input: ")) << ended.errors;
  EXPECT_EQ(std::count(ended.errors.begin(), ended.errors.end(), '\n'), 1) << ended.errors;
}

TEST_F(Share, OtherBytesFromStandardInputBecomeAFileThatDoesNotStay) {
  const std::string bytes("\xFF\xFE\0x", 4);
  const Ended ended = home_.print({"-", "data:,hello"}, home_.write("input", bytes));
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(read_file(home_.staging() + "/standard-input"), bytes);
  EXPECT_EQ(read_file(home_.staging() + "/data.txt"), "hello");
  EXPECT_FALSE(home_.has_received_files());
}

TEST_F(Share, WhatCannotBeSharedIsNamedAndTheRestIsShared) {
  const std::string file = home_.write("a.txt", "x");
  const std::string missing = home_.path("gone\n.txt");
  const Ended ended = home_.print({missing, "/dev/null", "", file});
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors, "left out: " + home_.path("gone\\n.txt") +
                              ": no such file\nleft out: /dev/null: it is a device\n"
                              "left out: \"\": the name is empty\n");
  EXPECT_EQ(attachments_of(ended.output).size(), 1U);
}

TEST_F(Share, NothingThatCanBeSharedOpensNothing) {
  const Ended ended = home_.print({"/no/such/file"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.output, "");
  EXPECT_TRUE(
      ended.errors.ends_with("not opened: nothing that was given can be shared; see to the reasons "
                             "above and share again\n"))
      << ended.errors;
}

TEST_F(Share, WhenNothingIsStagedNothingIsOpened) {
  const Ended ended = home_.print({"-"}, home_.write("input", "GIF89a"));
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.output, "");
  EXPECT_TRUE(ended.errors.starts_with("left out: standard input: image: ")) << ended.errors;
  EXPECT_TRUE(
      ended.errors.ends_with("\nnot opened: nothing that was given can be shared; see to "
                             "the reasons above and share again\n"))
      << ended.errors;
}

TEST_F(Share, ATextThatIsGivenIsEnoughForADraft) {
  const Ended ended = home_.print({"-", "--text", "words"}, home_.write("input", "GIF89a"));
  EXPECT_EQ(ended.status, 3);
  EXPECT_NE(ended.output, "");
}

TEST_F(Share, WrongUsage) {
  struct Row {
    const char* reason;
    std::vector<std::string> arguments;
  };
  const std::vector<Row> rows{
      {"nothing to share", {}},
      {"a title alone is nothing to share", {"--title", "x"}},
      {"a recipient alone is nothing to share", {"--to", "a@x", "--subject", "x"}},
      {"standard input as subject and as item", {"--subject", "-", "-"}},
      {"two kinds of text", {"--text", "a", "--html", "b"}},
      {"standard input twice", {"-", "-"}},
      {"standard input as text and as item", {"--text", "-", "-"}},
      {"an unknown option", {"--nonsense", "https://h/"}},
      {"an option without its value", {"https://h/", "--title"}},
  };
  for (const Row& row : rows) {
    const Ended ended = home_.share(row.arguments);
    EXPECT_EQ(ended.status, 2) << row.reason;
    EXPECT_EQ(std::count(ended.errors.begin(), ended.errors.end(), '\n'), 1) << row.reason;
  }
}

TEST_F(Share, WhatIsOnlyAskedIsAnswered) {
  for (const auto& [option, begins] : std::vector<std::pair<std::string, std::string>>{
           {"--version", "quoll-share "}, {"--help", "Shares links"}}) {
    const Ended ended = home_.share({option, "https://h/"});
    EXPECT_EQ(ended.status, 0) << option;
    EXPECT_TRUE(ended.output.starts_with(begins)) << ended.output;
    EXPECT_EQ(ended.errors, "") << option;
  }
}

TEST_F(Share, Texts) {
  const std::string input = home_.write("input", "1 < 2");
  const auto plain = message_of(home_.print({"--text", "-"}, input).output)->htmlBody();
  ASSERT_NE(plain.text(), nullptr);
  EXPECT_NE(plain.text()->find("1 &lt; 2"), std::string::npos);
  const Ended bad = home_.print({"--text", "-"}, home_.write("input", "\xFF"));
  EXPECT_EQ(bad.status, 1);
  EXPECT_TRUE(bad.errors.starts_with("left out: the text: it is not UTF-8\n")) << bad.errors;
}

TEST_F(Share, StyledTextHasLinksToTheNetOnly) {
  const std::string html =
      "<a href='javascript:a()'>a</a> <a href='data:text/html,b'>b</a> <a href='file:///c'>c</a> "
      "<a href='java&#10;script:d()'>d</a> <a href='https://h/'>e</a>";
  const auto body = message_of(home_.print({"--html", html}).output)->htmlBody();
  ASSERT_NE(body.text(), nullptr);
  EXPECT_NE(body.text()->find("<p>a b c d <a href=\"https://h/\">e</a></p>"), std::string::npos)
      << *body.text();
}

TEST_F(Share, WithoutAContainerLinksStillArrive) {
  const std::string file = home_.write("a.txt", "x");
  home_.environment()["QUOLL_GROUP_CONTAINERS"] = "/proc/nowhere";
  const Ended ended = home_.print({"https://h/", file});
  EXPECT_EQ(ended.status, 3);
  EXPECT_NE(ended.errors.find("left out: " + file + ": the shared folder cannot be used\n"),
            std::string::npos)
      << ended.errors;
  EXPECT_NE(ended.errors.find("\nthe shared folder cannot be used: "), std::string::npos);
  EXPECT_EQ(message_of(ended.output)->htmlBody(), Value("<a href=\"https://h/\">https://h/</a>"));
}

TEST_F(Share, StandardOutputThatCannotBeWritten) {
  const Ended ended = run({"sh", "-c", "exec \"$0\" --print https://h/ >/dev/full", QUOLL_SHARE},
                          home_.environment());
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors,
            "not opened: the URL cannot be written: no space left on device; quollctl doctor tells "
            "more\n");
}

TEST_F(Share, NoStandardDescriptors) {
  const Ended ended = run({"sh", "-c", "exec \"$0\" --print - https://h/ <&- >&-", QUOLL_SHARE},
                          home_.environment());
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(ended.errors.starts_with("left out: standard input: bad file descriptor\n"))
      << ended.errors;
}

TEST_F(Share, ThousandsOfFilesWithFewDescriptors) {
  constexpr int kFiles = 5000;
  std::filesystem::create_directory(home_.path("many"));
  for (int i = 0; i < kFiles; ++i) {
    home_.write("many/" + std::to_string(i), "x");
  }
  const Ended ended =
      run({"sh", "-c",
           "ulimit -n 1024; cd \"$HOME/many\" && find -type f -print0 | \"$0\" --print --null",
           QUOLL_SHARE},
          home_.environment());
  const auto staged = attachments_of(ended.output);
  const std::set different(staged.begin(), staged.end());
  EXPECT_EQ(different.size(), staged.size());
  // A busy machine may not copy them all in the time that a share has. Then every one of the others
  // is named, and for no other reason.
  std::istringstream errors(ended.errors);
  std::size_t late = 0;
  for (std::string line; std::getline(errors, line); ++late) {
    EXPECT_TRUE(line.starts_with("left out: ") && line.ends_with(": it took too long")) << line;
  }
  EXPECT_EQ(staged.size() + late, std::size_t{kFiles});
  EXPECT_EQ(ended.status, late == 0 ? 0 : 3);
}

TEST_F(Share, StandardInputIsOneThing) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"--null", "-"}, {"-", "--text", "-"}, {"-", "-"}}) {
    const Ended ended = home_.print(arguments);
    EXPECT_EQ(ended.status, 2);
    EXPECT_NE(ended.errors.find("standard input can be used only once"), std::string::npos);
  }
  const std::string list = home_.write("list", std::string("A title\0Words\0https://h/\0", 25));
  const Ended ended = home_.print({"-0", "--title", "-", "--text", "-"}, list);
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_EQ(message_of(ended.output)->subject(), Value("A title"));
  EXPECT_NE(message_of(ended.output)->htmlBody().description().find("Words"), std::string::npos);
}

TEST_F(Share, BytesOfADescriptorAreAFileOfTheirName) {
  const std::string from = home_.write("from", "the content");
  const Ended ended = run({"sh", "-c",
                           "exec \"$0\" --print --descriptor 5::a:b.txt "
                           "--descriptor 6:text/html:page 5<\"$HOME/from\" 6<\"$HOME/from\"",
                           QUOLL_SHARE},
                          home_.environment());
  EXPECT_EQ(ended.errors, "");
  auto staged = attachments_of(ended.output);  // in the order in which they were copied
  std::ranges::sort(staged);
  EXPECT_EQ(staged, (std::vector<std::string>{home_.staging() + "/a:b.txt",
                                              home_.staging() + "/page.html"}));
  EXPECT_EQ(read_file(home_.staging() + "/a:b.txt"), "the content");
  EXPECT_FALSE(home_.has_received_files());
  for (const char* wrong : {"", "x", "2", "-1", "5x", "99999999999", "5;a"}) {
    EXPECT_EQ(home_.print({"--descriptor", wrong}).status, 2) << wrong;
  }
}

// The program's own files would be taken for the item.
TEST_F(Share, ADescriptorIsOpenAndGivenOnce) {
  const auto errors_of = [&](const char* arguments) {
    const Ended ended =
        run({"sh", "-c", std::string("exec \"$0\" --text x --print ") + arguments, QUOLL_SHARE},
            home_.environment());
    EXPECT_EQ(ended.status, 2) << arguments;
    return ended.errors;
  };
  const std::string help = "; see quoll-share --help\n";
  EXPECT_EQ(errors_of("--descriptor 3::a.txt 3>&-"),
            "quoll-share: descriptor 3 is not open" + help);
  EXPECT_EQ(errors_of("--descriptor 3::a --descriptor 3::b 3</dev/null"),
            "quoll-share: descriptor 3 is given twice" + help);
}

TEST_F(Share, AFileThatMayNotGrowIsLeftOutWithTheReason) {
  const std::string large = home_.write("large", std::string(4'000'000, 'x'));
  const Ended ended =
      run({"sh", "-c", "ulimit -f 1000; exec \"$0\" --print - \"$1\" https://h/ <\"$1\"",
           QUOLL_SHARE, large},
          home_.environment());
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors,
            "left out: standard input: it cannot be kept in a temporary file: file too large\n"
            "left out: " +
                large + ": file too large\n");
}

// Its size, a page, is not that of what it holds; the sandbox lets this be asked.
TEST_F(Share, AFileOfTheSystemIsSharedAsItIsRead) {
  const std::string file = "/sys/kernel/fscaps";
  if (access(file.c_str(), R_OK) != 0) {
    GTEST_SKIP() << "there is no " << file;
  }
  EXPECT_EQ(home_.print({file}).status, 0);
  EXPECT_EQ(read_file(home_.staging() + "/fscaps"), read_file(file));
}

TEST_F(Share, AContainerWhosePathIsNotUtf8IsRefused) {
  const std::string folder = home_.path("bad\xFF");
  home_.environment()["QUOLL_GROUP_CONTAINERS"] = folder;
  const Ended ended = home_.print({home_.write("a.txt", "x"), "https://h/"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors, "not opened: the shared folder cannot be used: its path is not UTF-8: " +
                              home_.path("bad%FF") +
                              "; let QUOLL_GROUP_CONTAINERS name a folder whose path is, for the "
                              "whole session\n");
  EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST_F(Share, WithoutAThreadItEndsWithAReason) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer starts threads of its own";
  }
  const std::string file = home_.write("a.txt", "x");
  const Ended ended = run({"timeout", "-s", "KILL", "30", "env", "LD_PRELOAD=" QUOLL_NO_THREADS,
                           QUOLL_SHARE, "--print", file},
                          home_.environment());
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors, "not opened: no thread can be started; quollctl doctor tells more\n");
  EXPECT_EQ(home_.print({file}).status, 0) << "the lock is free";
}

TEST_F(Share, ASecondShareWaitsForItsTurn) {
  ASSERT_EQ(home_.print({home_.write("first.txt", "1")}).status, 0);
  const posix::UniqueFd turn(
      open((home_.container() + "/.locks/turn").c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_EQ(flock(turn.get(), LOCK_EX | LOCK_NB), 0);
  Process second(ShareHome::command({"--print", home_.write("second.txt", "2")}),
                 home_.environment());
  ASSERT_TRUE(waits_for_lock(second.id()));
  EXPECT_TRUE(std::filesystem::exists(home_.staging() + "/first.txt"))
      << "the first share's files are still there for the receiver";
  ASSERT_EQ(flock(turn.get(), LOCK_UN), 0);
  EXPECT_EQ(attachments_of(second.read_output()),
            std::vector<std::string>{home_.staging() + "/second.txt"});
  EXPECT_EQ(second.wait(), 0);
  EXPECT_FALSE(std::filesystem::exists(home_.staging() + "/first.txt"));
}

TEST_F(Share, SomebodyAtATerminalIsToldThatItWaits) {
  EXPECT_EQ(home_.print({"http://a/"}).status, 0) << "the container is there now";
  const posix::UniqueFd turn(
      ::open((home_.container() + "/.locks/turn").c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_EQ(::flock(turn.get(), LOCK_EX), 0);
  // `script` gives the share a terminal and passes on what it writes there.
  Process share({"script", "-qefc", std::string(QUOLL_SHARE) + " --print http://b/", "/dev/null"},
                home_.environment());
  const std::string told = share.read_line();
  const std::string number = std::to_string(getpid());
  EXPECT_TRUE(told == "waiting for another share (test_share_prog, process " + number +
                          ") to finish\r" ||
              told == "waiting for another share to finish\r")
      << told << "is said where the system does not tell who holds a lock";
  ASSERT_EQ(::flock(turn.get(), LOCK_UN), 0);
  EXPECT_TRUE(share.read_line().starts_with("quoll://compose?"));
  EXPECT_EQ(share.wait(), 0);
}

TEST_F(Share, SomebodyAtATerminalIsToldAtOnceThatAStoppedShareHoldsItUp) {
  EXPECT_EQ(home_.print({"http://a/"}).status, 0) << "the container is there now";
  const Process holder({"flock", "-o", home_.container() + "/.locks/turn", "sh", "-c",
                        "kill -STOP $PPID; touch " + home_.path("held")});
  while (!std::filesystem::exists(home_.path("held"))) {
    usleep(1000);
  }
  const std::string number = std::to_string(holder.id());
  Process waiting({"script", "-qefc", QUOLL_SHARE " --print http://b/", "/dev/null"},
                  home_.environment());
  const std::string told = waiting.read_line();
  EXPECT_TRUE(told == "waiting for another share (flock, process " + number +
                          "), which was stopped; kill -CONT " + number + " lets it go on\r" ||
              told == "waiting for another share to finish\r")
      << told << "is said where the system does not tell who holds a lock";
  EXPECT_EQ(kill(holder.id(), SIGKILL), 0);
}

TEST_F(Share, AKilledShareLeavesNothingHalf) {
  const std::string content(3'000'000, 'x');
  std::vector<std::string> arguments{"--print", "-"};
  for (int i = 0; i < 40; ++i) {
    arguments.push_back(home_.write("large" + std::to_string(i), content));
  }
  Process process(ShareHome::command(arguments, home_.write("input", "hello")),
                  home_.environment());
  std::error_code missing;
  while (std::filesystem::directory_iterator(home_.staging(), missing) ==
             std::filesystem::directory_iterator() &&
         !has_ended(process.id())) {
    usleep(100);
  }
  kill(process.id(), SIGKILL);
  process.wait();
  for (const auto& entry : std::filesystem::directory_iterator(home_.staging())) {
    const bool is_input = entry.path().filename() == "standard-input.txt";
    EXPECT_EQ(entry.file_size(), is_input ? 5 : content.size()) << entry.path();
  }
  const Ended next = home_.print({home_.write("next.txt", "x")});
  EXPECT_EQ(next.status, 0) << next.errors;
  EXPECT_FALSE(home_.has_received_files());
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home_.staging()), {}), 1);
}

/// A small file system of its own on a folder, as long as it lives.
class Mounted {
 public:
  Mounted(std::string folder, unsigned long flags, const char* options)
      : folder_(std::move(folder)),
        is_mounted_(mount("tmpfs", folder_.c_str(), "tmpfs", flags, options) == 0) {}
  Mounted(const Mounted&) = delete;
  Mounted& operator=(const Mounted&) = delete;
  ~Mounted() {
    if (is_mounted_) {
      umount2(folder_.c_str(), MNT_DETACH);
    }
  }
  [[nodiscard]] bool is_mounted() const { return is_mounted_; }

 private:
  std::string folder_;
  bool is_mounted_;
};

#define NEEDS_MOUNT(mounted)                                                          \
  if (!(mounted).is_mounted()) {                                                      \
    const char* const ci = std::getenv("CI");                                         \
    ASSERT_FALSE(ci != nullptr && std::string(ci) == "true") << "this must run here"; \
    GTEST_SKIP() << "only root can mount a file system to fill";                      \
  }

TEST_F(Share, AFullDiskLeavesOutWhatDoesNotFit) {
  const Mounted disk(home_.path("containers"), 0, "size=1m");
  NEEDS_MOUNT(disk);
  const std::string large = home_.write("large", std::string(4'000'000, 'x'));
  const std::string small = home_.write("small", "x");
  const Ended ended = home_.print({large, small});
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors, "left out: " + large +
                              ": no space left on device\n"
                              "the shared folder has too little room: " +
                              home_.path("containers") + "; make room there\n");
  EXPECT_EQ(attachments_of(ended.output), std::vector<std::string>{home_.staging() + "/small"});
  EXPECT_FALSE(std::filesystem::exists(home_.staging() + "/large"));
}

TEST_F(Share, BytesThatTheDiskHasNoRoomFor) {
  const Mounted disk(home_.path("containers"), 0, "size=1m");
  NEEDS_MOUNT(disk);
  const Ended ended =
      home_.print({"-", "https://h/"}, home_.write("input", std::string(4'000'000, 'x')));
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.errors,
            "left out: standard input: it cannot be kept in a temporary file: no space left on "
            "device\nthe shared folder has too little room: " +
                home_.path("containers") + "; make room there\n");
}

TEST_F(Share, ThatNothingHasRoomIsSaidToo) {
  const Mounted disk(home_.path("containers"), 0, "size=1m");
  NEEDS_MOUNT(disk);
  const Ended ended = home_.print({"-"}, home_.write("input", std::string(4'000'000, 'x')));
  EXPECT_EQ(ended.status, 1);
  EXPECT_NE(ended.errors.find("\nthe shared folder has too little room: " +
                              home_.path("containers") + "; make room there\nnot opened: "),
            std::string::npos)
      << ended.errors;
}

TEST_F(Share, AReportThatNobodyReadsKeepsNoOtherShareWaiting) {
  const std::string file = home_.write("a.txt", "x");
  std::string list;  // of more than a pipe holds of the report
  for (int number = 0; number < 1000; ++number) {
    list.append("/nowhere/" + std::to_string(number) + std::string(100, 'x')).push_back('\0');
  }
  home_.write("list", list);
  const std::string pipe = home_.path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
  const posix::UniqueFd both_ends(open(pipe.c_str(), O_RDWR | O_CLOEXEC));
  const Ended next = run({"sh", "-c",
                          "\"$0\" --print --null \"$1/a.txt\" <\"$1/list\" >\"$1/first\" "
                          "2>\"$1/pipe\" & until [ -s \"$1/first\" ]; do sleep 0.01; done; "
                          "timeout 10 \"$0\" --print \"$1/a.txt\"; ended=$?; kill $!; exit $ended",
                          QUOLL_SHARE, home_.path("")},
                         home_.environment());
  EXPECT_EQ(next.status, 0) << next.errors;
  EXPECT_EQ(attachments_of(next.output), std::vector<std::string>{home_.staging() + "/a.txt"});
}

TEST_F(Share, AReadOnlyContainer) {
  const std::string file = home_.write("a.txt", "x");
  ASSERT_EQ(home_.print({file}).status, 0);
  const Mounted disk(home_.path("containers"), MS_RDONLY, "size=1m");
  NEEDS_MOUNT(disk);
  const Ended ended = home_.print({"https://h/", file});
  EXPECT_EQ(ended.status, 3);
  EXPECT_NE(ended.errors.find("left out: " + file + ": "), std::string::npos) << ended.errors;
  EXPECT_NE(ended.errors.find("\nthe shared folder cannot be used: "), std::string::npos)
      << ended.errors;
}

}  // namespace
}  // namespace quoll::test
