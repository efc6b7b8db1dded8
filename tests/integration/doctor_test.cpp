// What quollctl says of the road of a share, on a bus and in a home of its own.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "quoll/linux/gio/applications.h"
#include "quoll/linux/posix/unique_fd.h"
#include "tests/integration/doctor_home.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

TEST_F(Doctor, AShareArrives) {
  install_receiver();
  const Ended ended = doctor({"--json"});
  EXPECT_EQ(ended.status, 0) << ended.output << ended.errors;
  EXPECT_EQ(Json::parse(ended.output)["arrives"], true);
  EXPECT_EQ(said(ended, "identity"), "good: it.vorlent.quoll2.Quoll-Share, for it.vorlent.quoll2");
  EXPECT_EQ(said(ended, "container"), "good: " + container());
  EXPECT_EQ(said(ended, "locks"), "good: nobody holds one");
  EXPECT_EQ(said(ended, "session bus"), "good: it answers");
  EXPECT_EQ(said(ended, "mail application"),
            "good: it.vorlent.quoll2 is quoll-compose, and can keep drafts");
  EXPECT_EQ(said(ended, "folders"), "good: " QUOLL_FOLDER_HELPER " packs them");
  EXPECT_EQ(said(ended, "pictures"), "good: " QUOLL_IMAGE_HELPER " writes them");
  EXPECT_EQ(said(ended, "environment"), "good: that of this program");
  EXPECT_EQ(said(ended, "shared copies"), "good: none");
  EXPECT_TRUE(fs::is_empty(bus_.data_home() + "/quoll-compose/drafts")) << "nothing is shared";
  EXPECT_TRUE(fs::is_empty(bus_.data_home() + "/quoll-compose/taken"));
}

TEST_F(Doctor, NobodyAnswers) {
  const Ended ended = doctor();
  EXPECT_EQ(ended.status, 1);
  EXPECT_NE(ended.output.find("BROKEN mail application"), std::string::npos) << ended.output;
  EXPECT_NE(ended.output.find("-> install the mail application or quoll-compose"),
            std::string::npos);
  EXPECT_TRUE(ended.output.ends_with("A share does not arrive, or not whole.\n"));
}

TEST_F(Doctor, AnEntryWhoseProgramIsMissing) {
  bus_.add_entry("it.vorlent.quoll2",
                 "[Desktop Entry]\nType=Application\nName=M\nExec=/nowhere/mail %u\n");
  const Ended ended = doctor({"--json"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(said(ended, "mail application"),
            "BROKEN: " + bus_.data_home() +
                "/applications/it.vorlent.quoll2.desktop is damaged, or its program is missing");
}

TEST_F(Doctor, WithoutABusAnEntryIsEnough) {
  const Environment no_bus{{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere"}};
  Ended ended = doctor({"--json"}, no_bus);
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(said(ended, "session bus").starts_with("BROKEN: there is none: "))
      << said(ended, "session bus");
  bus_.add_entry("it.vorlent.quoll2",
                 "[Desktop Entry]\nType=Application\nName=M\nExec=/bin/true %u\n");
  ended = doctor({"--json"}, no_bus);
  EXPECT_EQ(ended.status, 0) << ended.output;
  EXPECT_TRUE(said(ended, "session bus").starts_with("note: "));
  EXPECT_TRUE(said(ended, "mail application")
                  .starts_with("good: it.vorlent.quoll2 is started by its desktop entry"));
}

TEST_F(Doctor, AContainerThatIsNoFolder) {
  install_receiver();
  fs::create_directories(fs::path(container()).parent_path());
  std::ofstream(container()) << "x";
  const Ended ended = doctor({"--json"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(said(ended, "container"),
            "BROKEN: the shared folder cannot be used: " + container() + ": it is no folder");
  EXPECT_EQ(advised(ended, "container"), "move \"" + container() + "\" away");
}

TEST_F(Doctor, NoPlaceForAContainer) {
  install_receiver();
  const Ended ended = doctor({"--json"}, {{"QUOLL_GROUP_CONTAINERS", "relative"}});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(said(ended, "container"),
            "BROKEN: the shared folder cannot be used: there is no place for it");
}

TEST_F(Doctor, AContainerThatIsOpenToOthersIsClosed) {
  install_receiver();
  fs::create_directories(container());
  ASSERT_EQ(chmod(container().c_str(), 0755), 0);
  Ended ended = doctor({"--json"});
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(said(ended, "container"), "note: " + container() + " is open to other users");
  ended = doctor({"--fix", "--json"});
  EXPECT_EQ(said(ended, "repairs"),
            "note: closed " + container() +
                " to other users; could not give quoll:// links to it.vorlent.quoll2");
  EXPECT_EQ(said(ended, "container"), "good: " + container());
  EXPECT_EQ(fs::status(container()).permissions(), fs::perms::owner_all);
}

TEST_F(Doctor, WhatAKilledShareLeftIsRemovedWhenAsked) {
  const std::string left = container() + "/.incoming/.quoll-incoming-1";
  fs::create_directories(left + "/1");
  EXPECT_EQ(doctor().status, 1);
  EXPECT_TRUE(fs::exists(left)) << "no receiver has started, which removes it";
  const Ended ended = doctor({"--fix", "--json"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(said(ended, "repairs").find("removed what killed shares left: 1") !=
              std::string::npos)
      << said(ended, "repairs");
  EXPECT_FALSE(fs::exists(left));
}

TEST_F(Doctor, LinksAreGivenToTheMailApplication) {
  const Environment settings{{"XDG_CONFIG_HOME", bus_.path("config")}};
  bus_.add_entry("it.vorlent.quoll2",
                 "[Desktop Entry]\nType=Application\nName=M\nExec=/bin/true %u\n"
                 "MimeType=x-scheme-handler/other;\n");
  EXPECT_EQ(said(doctor({"--json"}, settings), "quoll:// links"),
            "note: no application opens them");
  EXPECT_EQ(said(doctor({"--fix", "--json"}, settings), "quoll:// links"),
            "good: it.vorlent.quoll2.desktop opens them");
}

constexpr const char* kSomebody = "note: a program uses the shared folder";

TEST_F(Doctor, WhoHoldsALockIsNamed) {
  install_receiver();
  fs::create_directories(container() + "/.locks");
  const std::string turn = container() + "/.locks/turn";
  const posix::UniqueFd lock(open(turn.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
  const std::string found = said(doctor({"--json"}), "locks");
  if (found == kSomebody) {
    GTEST_SKIP() << "the system does not tell who holds a lock";
  }
  const std::string number = std::to_string(getpid());
  EXPECT_TRUE(found.starts_with("note: test_doctor (process " + number + ", started 20")) << found;
  EXPECT_TRUE(found.ends_with(") uses the shared folder: a new share waits")) << found;
  EXPECT_EQ(said(doctor({"--json"}), "locks"), found) << "it was started once";
}

// Whoever is stopped holds its locks for ever.
TEST_F(Doctor, AShareThatIsStoppedHoldsUpAllOthers) {
  install_receiver();
  fs::create_directories(container() + "/.locks");
  struct Row {
    const char* lock;
    const char* how;  ///< "-s" for one that others can hold too
    const char* state;
  };
  for (const Row& row :
       {Row{"turn", "-x", "BROKEN"}, Row{"%2F.lock", "-x", "BROKEN"}, Row{"%2F.lock", "-s", "note"},
        Row{"%2FSharedData%2FShare.lock", "-s", "BROKEN"},
        Row{"%2FSharedData%2FContacts.lock", "-x", "note"}}) {
    Process holder({"flock", "-o", row.how, container() + "/.locks/" + row.lock, "sh", "-c",
                    "kill -STOP $PPID; touch " + bus_.path("held")});
    while (!fs::exists(bus_.path("held"))) {
      usleep(1000);
    }
    fs::remove(bus_.path("held"));
    const Ended ended = doctor({"--json"});
    const std::string number = std::to_string(holder.id());
    const std::string found = said(ended, "locks");
    if (found == kSomebody) {
      GTEST_SKIP() << "the system does not tell who holds a lock";
    }
    EXPECT_TRUE(found.starts_with(std::string(row.state) + ": flock (process " + number)) << found;
    EXPECT_EQ(ended.status, *row.state == 'B' ? 1 : 0) << row.lock;
    if (*row.state == 'B') {
      EXPECT_EQ(advised(ended, "locks"),
                "kill -CONT " + number + " lets it go on, kill -KILL " + number + " ends it");
    }
    EXPECT_EQ(kill(holder.id(), SIGKILL), 0);
  }
}

// A program names itself as it likes.
TEST_F(Doctor, ANameWithALineBreakHidesNoStoppedShare) {
  install_receiver();
  fs::create_directories(container() + "/.locks");
  Process holder({"python3", "-c",
                  "import fcntl, os, sys; lock = open(sys.argv[1], 'w'); fcntl.flock(lock, 2); "
                  "open('/proc/self/comm', 'w').write('a\\nb'); open(sys.argv[2], 'w'); "
                  "os.kill(os.getpid(), 19)",
                  container() + "/.locks/turn", bus_.path("held")});
  while (!fs::exists(bus_.path("held"))) {
    usleep(1000);
  }
  std::string found;
  do {  // it stops a moment after it has said that it holds the lock
    found = said(doctor({"--json"}), "locks");
  } while (found.starts_with("note: a\nb"));
  EXPECT_TRUE(found == kSomebody || found.starts_with("BROKEN: a\nb (process ")) << found;
  EXPECT_EQ(kill(holder.id(), SIGKILL), 0);
}

TEST_F(Doctor, TheRoomForDraftsOnAnotherDiskIsTold) {
  const std::string drafts = bus_.data_home() + "/quoll-compose";
  fs::create_directories(drafts);
  EXPECT_EQ(said(doctor({"--json"}), "space for drafts").substr(0, 7), "nothing")
      << "they are on the disk of the shared folder";
  if (mount("tmpfs", drafts.c_str(), "tmpfs", 0, "size=26m") != 0) {
    GTEST_SKIP() << "only root can mount a file system to fill";
  }
  EXPECT_EQ(said(doctor({"--json"}), "space for drafts"), "good: 26 MiB free in " + drafts);
  ASSERT_EQ(mount("tmpfs", drafts.c_str(), "tmpfs", MS_REMOUNT, "size=4m"), 0);
  EXPECT_EQ(said(doctor({"--json"}), "space for drafts"), "note: 4 MiB free in " + drafts);
  std::ofstream(drafts + "/full") << std::string(std::size_t{4000} << 10, 'x');
  EXPECT_EQ(said(doctor({"--json"}), "space for drafts"), "note: 96 KiB free in " + drafts);
  std::ofstream(drafts + "/full") << std::string(std::size_t{4048} << 10, 'x');
  const Ended ended = doctor({"--json"});
  EXPECT_EQ(said(ended, "space for drafts"), "BROKEN: 48 KiB free in " + drafts);
  EXPECT_EQ(advised(ended, "space for drafts"), "make room there: nothing can be kept");
  umount2(drafts.c_str(), MNT_DETACH);
}

TEST_F(Doctor, TheMailClientThatDraftsGoTo) {
  install_receiver();
  const auto client = [&](const std::string& id, const std::string& more) {
    bus_.add_entry(id,
                   "[Desktop Entry]\nType=Application\nName=M\nMimeType=x-scheme-handler/mailto;"
                   "\nExec=sh %u\n" +
                       more);
    std::ofstream(bus_.path("config/mimeapps.list"))
        << "[Default Applications]\nx-scheme-handler/mailto=" << id << ".desktop\n";
    return said(doctor({"--json"}), "mail client");
  };
  EXPECT_EQ(said(doctor({"--json"}), "mail client"), "note: no program is the default for mail");
  EXPECT_EQ(client("thunderbird", ""), "good: thunderbird.desktop");
  EXPECT_EQ(client("firefox", ""),
            "note: firefox.desktop gets recipients, subject and text, and no files");
  EXPECT_EQ(client("evolution", "X-Flatpak=x\n"),
            "note: evolution.desktop is in a sandbox that no attachment of a draft reaches");
  fs::create_directories(bus_.path("config/quoll-compose"));
  std::ofstream(bus_.path("config/quoll-compose/mail-client")) << "gone.desktop\n";
  EXPECT_EQ(client("mutt", ""),
            "note: gone.desktop was chosen and is not there; drafts go to mutt.desktop");
}

TEST_F(Doctor, APipeInThePlaceOfTheMailClientIsNotWaitedFor) {
  install_receiver();
  const std::string setting = bus_.path("config/quoll-compose/mail-client");
  fs::create_directories(fs::path(setting).parent_path());
  ASSERT_EQ(mkfifo(setting.c_str(), S_IRUSR | S_IWUSR), 0);
  const Ended ended = run({"timeout", "20", QUOLLCTL, "doctor", "--json"}, bus_.environment());
  EXPECT_EQ(said(ended, "mail client"), "note: no program is the default for mail");
}

TEST_F(Doctor, MenusAreLookedFor) {
  const std::string code =
      bus_.data_home() + "/kpackage/Purpose/it.vorlent.quoll2.share/contents/code";
  fs::create_directories(code);
  std::ofstream(code + "/main.bin") << "x";
  ASSERT_EQ(chmod((code + "/main.bin").c_str(), 0644), 0);
  make_program("dolphin");
  make_program("nemo");
  const Environment found{{"PATH", bus_.path("programs")}};
  Ended ended = doctor({"--json"}, found);
  EXPECT_EQ(said(ended, "menu of KDE"), "note: " + code + "/main.bin cannot be started");
  EXPECT_EQ(said(ended, "menu of Nemo"), "note: not installed");
  EXPECT_EQ(said(ended, "menu of Nautilus").substr(0, 7), "nothing") << "it is not there";
  ASSERT_EQ(chmod((code + "/main.bin").c_str(), 0755), 0);
  ended = doctor({"--json"}, found);
  EXPECT_EQ(said(ended, "menu of KDE"), "good: " + code + "/main.bin");
  ended = doctor({"--json"}, {{"PATH", bus_.path("home")}});
  EXPECT_EQ(said(ended, "menus"), "good: no program with a menu for shares is here");
}

TEST_F(Doctor, BrowsersFindTheProgram) {
  make_program("brave-browser");
  const Environment found{{"PATH", bus_.path("programs")}, {"HOME", bus_.path("home")}};
  Ended ended = doctor({"--json"}, found);
  const std::string folder =
      bus_.path("home") + "/.config/BraveSoftware/Brave-Browser/NativeMessagingHosts";
  const std::string manifest = folder + "/it.vorlent.quoll2.json";
  fs::create_directories(folder);
  std::ofstream(manifest) << R"({"name":"it.vorlent.quoll2","path":"/nowhere/program"})";
  ended = doctor({"--json"}, found);
  EXPECT_EQ(said(ended, "browser Brave"),
            "note: " + manifest + " names /nowhere/program, which cannot be started");
  EXPECT_EQ(advised(ended, "browser Brave"), "install quoll-share-browser again");
  std::ofstream(manifest) << "[";
  ended = doctor({"--json"}, found);
  EXPECT_EQ(said(ended, "browser Brave"),
            "note: " + manifest + " names no program, which cannot be started");
  std::ofstream(manifest) << R"({"path":")" << bus_.path("programs/brave-browser") << R"("})";
  ended = doctor({"--json"}, found);
  EXPECT_EQ(said(ended, "browser Brave"), "good: " + manifest);
  EXPECT_EQ(said(ended, "browser Vivaldi").substr(0, 7), "nothing") << "it is not there";
}

TEST_F(Doctor, ABrowserOfAFlatpakMayStartNothing) {
  make_program("com.vivaldi.Vivaldi");
  const Environment found{{"PATH", bus_.path("programs")}, {"HOME", bus_.path("home")}};
  EXPECT_EQ(said(doctor({"--json"}, found), "browser Vivaldi"),
            "note: as a Flatpak it may start no program of this system");
  const std::string folder = bus_.path("home") + "/.config/vivaldi/NativeMessagingHosts";
  fs::create_directories(folder);
  std::ofstream(folder + "/it.vorlent.quoll2.json") << R"({"path":"/bin/true"})";
  EXPECT_EQ(said(doctor({"--json"}, found), "browser Vivaldi"),
            "note: as a Flatpak it may start no program of this system");
}

TEST_F(Doctor, TheClipboardNeedsAProgram) {
  make_program("xclip");
  const auto found = [&](const Environment& display) {
    Environment environment = display;
    environment["PATH"] = bus_.path("programs");
    return doctor({"--json"}, environment);
  };
  EXPECT_EQ(said(found({}), "clipboard"), "good: there is no display");
  EXPECT_EQ(said(found({{"DISPLAY", ":7"}}), "clipboard"), "good: read by xclip");
  const Environment both{{"DISPLAY", ":7"}, {"WAYLAND_DISPLAY", "wayland-7"}};
  for (const Environment& display : {both, Environment{{"WAYLAND_DISPLAY", "wayland-7"}}}) {
    const Ended ended = found(display);
    EXPECT_EQ(said(ended, "clipboard"), "note: wl-paste is missing");
    EXPECT_EQ(advised(ended, "clipboard"),
              "install wl-clipboard to share what the clipboard holds");
  }
  fs::remove(bus_.path("programs/xclip"));
  make_program("wl-paste");
  EXPECT_EQ(said(found(both), "clipboard"), "good: read by wl-paste") << "X shows the same one";
}

TEST_F(Doctor, AMailApplicationIsNotStarted) {
  const std::string mark = bus_.path("mark");
  make_program("mail", "touch " + mark);
  bus_.add_service("it.vorlent.quoll2", bus_.path("programs/mail"));
  const Ended ended = doctor({"--json"});
  EXPECT_EQ(said(ended, "mail application"), "note: it.vorlent.quoll2 is started by " +
                                                 bus_.path("programs/mail") +
                                                 ", which was not tried");
  EXPECT_FALSE(fs::exists(mark));
}

TEST_F(Doctor, TheFileThatStartsAMissingProgramIsNamed) {
  const std::string file = bus_.path("system-data/dbus-1/services/it.vorlent.quoll2.service");
  bus_.add_service("it.vorlent.quoll2", "/nowhere/mail");
  Ended ended = doctor({"--json"});
  EXPECT_EQ(said(ended, "mail application"),
            "BROKEN: it.vorlent.quoll2 cannot be started: /nowhere/mail, which " + file +
                " starts, does not exist");
  EXPECT_EQ(advised(ended, "mail application"), "install the package of " + file + " again");
  EXPECT_EQ(advised(doctor({"--json"}, {{"HOME", bus_.path("system-data")}}), "mail application"),
            "remove " + file);
  bus_.add_service("it.vorlent.quoll2", "/nowhere/quoll-compose");
  ended = doctor({"--json"});
  EXPECT_EQ(said(ended, "mail application"),
            "BROKEN: the mail application could not be started: /nowhere/quoll-compose, which " +
                file + " starts, does not exist");
  EXPECT_EQ(advised(ended, "mail application"), "install the package of " + file + " again");
  bus_.add_service("it.vorlent.quoll2", "/bin/false");
  EXPECT_EQ(advised(doctor({"--json"}), "mail application"), "remove " + file + ", which says so");
}

TEST_F(Doctor, WhatTheReceiverCannotDoIsSaidInItsWords) {
  install_receiver();
  std::ofstream(bus_.data_home() + "/quoll-compose") << "x";
  const std::string found = said(doctor({"--json"}), "mail application");
  EXPECT_TRUE(found.starts_with("BROKEN: the mail application refuses: ")) << found;
  EXPECT_NE(found.find(bus_.data_home() + "/quoll-compose"), std::string::npos) << found;
}

TEST_F(Doctor, AFolderOfDraftsThatCannotBeWrittenHasACommand) {
  if (geteuid() == 0) {
    GTEST_SKIP() << "root may write everywhere";
  }
  install_receiver();
  const std::string drafts = bus_.data_home() + "/quoll-compose";
  fs::create_directories(drafts);
  ASSERT_EQ(chmod(drafts.c_str(), S_IRUSR | S_IXUSR), 0);
  EXPECT_EQ(advised(doctor({"--json"}), "mail application"), "chmod u+rwX \"" + drafts + "\"");
  ASSERT_EQ(chmod(drafts.c_str(), S_IRWXU), 0);
}

// It has as long to answer as in a share, which is too long for a test.
TEST_F(Doctor, AReceiverThatDoesNotAnswerIsNotWaitedForForEver) {
  const ScopedEnvironment here(bus_.environment());
  Process receiver({QUOLL_COMPOSE, "--service"}, bus_.environment());
  while (!is_receiver_running()) {
    usleep(1000);
  }
  const auto ask = [](std::chrono::milliseconds time_out) {
    const auto answer = gio::activate_application("it.vorlent.quoll2", time_out);
    return (answer.is_there ? "there: " : "nobody: ") + answer.failure.value_or("well");
  };
  EXPECT_EQ(ask(std::chrono::minutes(2)), "there: well");
  ASSERT_EQ(kill(receiver.id(), SIGSTOP), 0);
  EXPECT_EQ(ask(std::chrono::milliseconds(50)),
            "there: the mail application did not answer within 50 ms");
}

TEST_F(Doctor, DraftsAreCounted) {
  make_program(
      "quoll-compose",
      "case $* in *--json*)\n"
      "echo '[{\"state\": \"kept\"}, {\"state\": \"set aside\"}, {\"state\": \"kept\"}]' ;;\n"
      "*) exec " QUOLL_COMPOSE " \"$@\" ;; esac");
  bus_.add_service("it.vorlent.quoll2", bus_.path("programs/quoll-compose") + " --service");
  const Ended ended = doctor({"--json"});
  EXPECT_EQ(said(ended, "drafts"),
            "good: 2 kept, 1 set aside; given ones go after 7 days, set aside ones after 30, the "
            "others stay");
  EXPECT_EQ(advised(ended, "drafts"), "quoll-compose --list shows them");
}

TEST_F(Doctor, WhyTheNewestDraftWasKept) {
  const std::string kept = R"({"state": "kept", "name": "N", "reason": "no mail client is there"})";
  make_program("quoll-compose", "case $* in *--json*) echo '[" + kept +
                                    R"(, {"state": "given", "name": "M", "reason": ""}]' ;;)"
                                    "\n*) exec " QUOLL_COMPOSE " \"$@\" ;; esac");
  bus_.add_service("it.vorlent.quoll2", bus_.path("programs/quoll-compose") + " --service");
  const Ended ended = doctor({"--json"});
  EXPECT_EQ(said(ended, "drafts"),
            "note: 1 given, 1 kept; given ones go after 7 days, set aside ones after 30, the "
            "others stay; the newest kept one is N: no mail client is there");
  EXPECT_EQ(advised(ended, "drafts"), "quoll-compose --again N gives it to a mail client");
}

TEST_F(Doctor, WhyTheNewestDraftWasSetAside) {
  const std::string aside = R"({"state": "set aside", "name": "N", "reason": "no room"})";
  make_program("quoll-compose", "case $* in *--json*) echo '[" + aside +
                                    "]' ;;\n*) exec " QUOLL_COMPOSE " \"$@\" ;; esac");
  bus_.add_service("it.vorlent.quoll2", bus_.path("programs/quoll-compose") + " --service");
  const Ended ended = doctor({"--json"});
  EXPECT_TRUE(said(ended, "drafts").starts_with("note: 1 set aside; ")) << said(ended, "drafts");
  EXPECT_TRUE(said(ended, "drafts").ends_with("; the newest that was set aside is N: no room"))
      << said(ended, "drafts");
  EXPECT_EQ(advised(ended, "drafts"), "quoll-compose --list shows them");
}

TEST_F(Doctor, WhatIsNoListOfDraftsIsNotCounted) {
  bus_.add_service("it.vorlent.quoll2", bus_.path("programs/quoll-compose") + " --service");
  const std::string program = bus_.path("programs/quoll-compose");
  for (const char* list : {"[1]", "[{\"state\": 3}]", "[{}]", "[[]]", "{}", "3", "words"}) {
    make_program("quoll-compose", "case $* in *--json*) echo '" + std::string(list) +
                                      "' ;;\n*) exec " QUOLL_COMPOSE " \"$@\" ;; esac");
    EXPECT_EQ(said(doctor({"--json"}), "drafts"),
              "note: not known: " + program + " does not list them")
        << list;
  }
}

TEST_F(Doctor, AHelperThatCannotStartSaysWhy) {
  make_program("helper", "echo 'libgone.so: cannot be loaded' >&2; exit 127");
  const Ended ended = doctor({"--json"}, {{"QUOLL_IMAGE_HELPER", bus_.path("programs/helper")}});
  EXPECT_EQ(said(ended, "pictures"),
            "BROKEN: " + bus_.path("programs/helper") + ": image: libgone.so: cannot be loaded");
}

TEST_F(Doctor, TheLastLogLinesAreShown) {
  const std::string journal = bus_.path("programs/journalctl");
  const Environment found{{"PATH", bus_.path("programs") + ":/usr/bin:/bin"}};
  make_program("journalctl", R"(echo "$@" >"$0.asked"; printf 'one\ntwo \033[31m\n')");
  EXPECT_EQ(said(doctor({"--json"}, found), "last log lines"), "good: 2");
  const std::string told = doctor({}, found).output;
  EXPECT_NE(told.find("  one\n"), std::string::npos) << told;
  EXPECT_EQ(told.find('\033'), std::string::npos) << "a log cannot write to the terminal";
  std::string asked;
  std::getline(std::ifstream(journal + ".asked"), asked);
  EXPECT_NE(asked.find("--identifier=quoll-share"), std::string::npos) << asked;
  EXPECT_NE(asked.find("--identifier=quoll-compose"), std::string::npos) << asked;
  make_program("journalctl");
  EXPECT_EQ(
      said(doctor({"--json"}, found), "last log lines"),
      fs::exists("/run/systemd/journal/socket") ? "good: none" : "note: no journal runs here");
  make_program("journalctl", "echo half; exit 1");
  EXPECT_EQ(said(doctor({"--json"}, found), "last log lines"),
            "note: there is no system journal here");
}

}  // namespace
}  // namespace quoll::test
