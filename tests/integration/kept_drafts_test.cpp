// What a person can do with a draft that is kept: list, open, give again, delete.
#include <fcntl.h>
#include <sys/file.h>

#include <functional>
#include <nlohmann/json.hpp>

#include "quoll/linux/posix/unique_fd.h"
#include "tests/integration/client_home.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class KeptDrafts : public MailClientTest {
 protected:
  /// Shares this when no client is chosen, and answers the draft's name.
  [[nodiscard]] std::string keep(const std::string& url = "quoll://compose?subject=S") const {
    EXPECT_EQ(compose({url}).status, 0);
    return only_name();
  }
  [[nodiscard]] std::string only_name() const {
    const auto all = home_.drafts();
    return all.size() == 1 ? fs::path(all.front()).stem().string() : "";
  }
  [[nodiscard]] std::string listed() const { return compose({"--list"}).output; }
  /// Modes of files bind root too, in this program.
  [[nodiscard]] Ended compose_bound_by_modes(const Words& arguments) const {
    Words command{QUOLL_COMPOSE};
    if (geteuid() == 0) {
      command = {"setpriv", "--bounding-set", "-dac_override,-dac_read_search,-fowner",
                 QUOLL_COMPOSE};
    }
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, home_.bus.environment());
  }
  void forget_client() const { fs::remove(home_.bus.path("given")); }
  [[nodiscard]] posix::UniqueFd locked(const std::string& folder) const {
    posix::UniqueFd fd(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    EXPECT_EQ(flock(fd.get(), LOCK_EX | LOCK_NB), 0);
    return fd;
  }
};

TEST_F(KeptDrafts, AreListedForProgramsByTheirNames) {
  const std::string name = keep();
  EXPECT_TRUE(listed().starts_with(name + "  ")) << listed();
  const json list = json::parse(compose({"--list", "--json"}).output);
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0]["name"], name);
  EXPECT_EQ(list[0]["state"], "kept");
  EXPECT_EQ(list[0]["reason"], "no mail client is chosen for mail links");
  EXPECT_EQ(list[0]["subject"], "S");
  EXPECT_EQ(list[0]["path"], home_.drafts().front());
  EXPECT_EQ(list[0]["written"], true);
  EXPECT_EQ(list[0]["files"], "");
  EXPECT_TRUE(list[0]["time"].get<std::string>().starts_with("20"));
  EXPECT_EQ(compose({"--json"}).status, 2);
  fs::remove(home_.drafts().front());
  EXPECT_EQ(compose({"--list", "--json"}).output, "[]\n");
}

TEST_F(KeptDrafts, WhyTheyAreKeptIsListed) {
  const std::string name = keep();
  const std::string listed_first = "  kept: no mail client is chosen for mail links  S  ";
  EXPECT_TRUE(holds(listed(), listed_first)) << listed();
  choose("thunderbird", "The Bird", "exit 3");
  EXPECT_EQ(compose({"--again", name}).status, 1);
  EXPECT_TRUE(holds(listed(), "  kept: The Bird ended at once, with status 3; open or import"))
      << listed();
  choose("thunderbird", "The Bird");
  EXPECT_EQ(compose({"--again", name}).status, 0);
  EXPECT_TRUE(holds(listed(), "  given  S  ")) << listed();
  const std::string failed = home_.given_folder() + "/" + name;
  fs::remove_all(failed);  // as after 7 days
  EXPECT_TRUE(holds(listed(), "  kept  S  ")) << listed();
}

TEST_F(KeptDrafts, AReasonThatCannotBeNotedChangesNothing) {
  const std::string name = keep();
  fs::create_directories(home_.given_folder() + "/" + name + "/.reason/x");  // where it is written
  choose("thunderbird", "The Bird", "exit 3");
  EXPECT_TRUE(holds(compose({"--again", name}).errors, "The Bird ended at once"));
  EXPECT_TRUE(holds(listed(), "  kept  S  ")) << "not with that of before: " << listed();
  EXPECT_EQ(compose({"--delete", name}).status, 0);
  EXPECT_TRUE(fs::is_empty(home_.given_folder()));
}

TEST_F(KeptDrafts, AreShownByNameOrPath) {
  const std::string name = keep();
  const Ended shown = compose({"--show", name});
  EXPECT_EQ(shown.status, 0);
  EXPECT_EQ(shown.output, compose({"--show", home_.drafts().front()}).output);
  EXPECT_TRUE(shown.output.starts_with("Subject: S\n")) << shown.output;
  EXPECT_EQ(compose({"--show", "20200101-000000"}).errors,
            "quoll-compose: there is no draft 20200101-000000; quoll-compose --list names those "
            "there are\n");
}

TEST_F(KeptDrafts, AreOpenedWithTheClientOrWithWhatOpensMessageFiles) {
  const std::string name = keep();
  const Ended none = compose({"--open", name});
  EXPECT_EQ(none.status, 1);
  EXPECT_TRUE(none.errors.starts_with("quoll-compose: nothing opens message files here; "))
      << none.errors;
  EXPECT_EQ(none.output, "");
  add_viewer();
  ASSERT_EQ(compose({"--open", name}).output, "The draft was opened with A Viewer.\n");
  EXPECT_EQ(given(), Words{home_.drafts().front()});
  forget_client();
  choose("thunderbird", "The Bird");
  ASSERT_EQ(compose({"--open", name}).output, "The draft was opened with The Bird.\n");
  EXPECT_EQ(given(), Words{home_.drafts().front()});
  EXPECT_TRUE(holds(listed(), "  kept: ")) << "it was looked at";
}

TEST_F(KeptDrafts, AreGivenAgainAsAMessageFile) {
  const std::string name = keep();
  const Ended none = compose({"--again", name});
  EXPECT_EQ(none.status, 1) << "there is no client";
  EXPECT_EQ(none.output, "");
  EXPECT_TRUE(holds(listed(), "  kept: "));
  choose("thunderbird", "The Bird");
  ASSERT_EQ(compose({"--again", name}).output, "The draft was given to The Bird.\n");
  EXPECT_EQ(given(), Words{home_.drafts().front()});
  EXPECT_TRUE(is_marked());
  EXPECT_TRUE(holds(listed(), "  given  "));
  forget_client();
  ASSERT_EQ(compose({"--again", name}).status, 0) << "and once more";
  EXPECT_EQ(given(), Words{home_.drafts().front()});
}

TEST_F(KeptDrafts, AreGivenAgainByTheCommandLineWhileTheFilesAreThere) {
  choose("claws-mail", "Claws");
  const std::string name = keep(ReceiverHome::url({home_.stage("a.txt", "x")}));
  const Words first = given();
  const std::string message = read_file(home_.drafts().front());
  ASSERT_TRUE(std::ranges::find(first, given_folder() + "/files/0/a.txt") != first.end());
  forget_client();
  fs::remove(given_folder() + "/given");  // the end of the client was not seen
  EXPECT_TRUE(holds(listed(), "  perhaps given  ")) << listed();
  ASSERT_EQ(compose({"--again", name}).output, "The draft was given to Claws.\n");
  EXPECT_EQ(given(), first);
  EXPECT_EQ(read_file(home_.drafts().front()), message) << "its name and its bytes stay";
  EXPECT_TRUE(holds(listed(), "  given  "));
  forget_client();
  add_client_program("bin/thunderbird");
  add_client("thunderbird", "The Bird", "thunderbird --flag %u");
  ASSERT_EQ(compose({"--again", name, "--client", "the bird"}).output,
            "The draft was given to The Bird.\n");
  EXPECT_EQ(given(), Words{home_.drafts().front()});
  forget_client();
  ASSERT_EQ(compose({"--again", name}).output, "The draft was given to Claws.\n")
      << "the choice stays";
  EXPECT_EQ(given(), first) << "nothing of the first client's files went";
}

TEST_F(KeptDrafts, WithoutItsFilesADraftIsForClientsThatOpenMessageFiles) {
  choose("thunderbird", "The Bird");
  const std::string name = keep(ReceiverHome::url({home_.stage("a.txt", "x")}));
  forget_client();
  choose("claws-mail", "Claws");
  const Ended ended = compose({"--again", name});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors,
            "quoll-compose: the files of the draft are in its message file only, which Claws does "
            "not take; quoll-compose --open " +
                name + " opens it\n");
  EXPECT_FALSE(was_started());
  EXPECT_TRUE(holds(listed(), "  given  ")) << "the first client has it";
}

TEST_F(KeptDrafts, OneThatNoClientTookIsGivenAgainWithItsFiles) {
  const std::string url = ReceiverHome::url({home_.stage("a.txt", "x")});
  Environment nowhere = home_.bus.environment();
  nowhere["DISPLAY"] = std::nullopt;
  nowhere["WAYLAND_DISPLAY"] = std::nullopt;
  struct Row {
    const char* reason;
    std::function<void()> keep;
  };
  const Row rows[] = {
      {"no display",
       [&] {
         EXPECT_EQ(run({QUOLL_COMPOSE, url}, nowhere).status, 0);
       }},
      {"no client", [&] { EXPECT_EQ(compose({url}).status, 0); }},
      {"a flood", [&] { EXPECT_EQ(compose(Words(11, url)).status, 0); }},
      {"a client that takes none",
       [&] {
         add_client("firefox", "Firefox", "firefox %u");
         make_default("firefox");
         EXPECT_EQ(compose({url}).status, 0);
       }},
  };
  for (const Row& row : rows) {
    row.keep();
    ASSERT_FALSE(home_.drafts().empty()) << row.reason;
    EXPECT_TRUE(holds(listed(), "  kept: ")) << row.reason << listed();
    choose("claws-mail", "Claws");
    const std::string name = fs::path(home_.drafts().front()).stem().string();
    const Ended ended = compose({"--again", name});
    ASSERT_EQ(ended.output, "The draft was given to Claws.\n") << row.reason << ended.errors;
    const Words words = given();
    EXPECT_TRUE(std::ranges::find(words, given_folder() + "/files/0/a.txt") != words.end())
        << row.reason;
    forget_client();
    fs::remove(home_.bus.path("config/mimeapps.list"));
    for (const std::string& draft : home_.drafts()) {
      EXPECT_EQ(compose({"--delete", fs::path(draft).stem().string()}).status, 0) << row.reason;
    }
    EXPECT_TRUE(fs::is_empty(home_.given_folder())) << row.reason;
  }
}

TEST_F(KeptDrafts, AClientThatFailsHasNotTakenIt) {
  const std::string name = keep();
  choose("thunderbird", "The Bird", "exit 3");
  const Ended ended = compose({"--again", name});
  EXPECT_EQ(ended.status, 1);
  EXPECT_TRUE(holds(ended.errors, "The Bird ended at once, with status 3")) << ended.errors;
  EXPECT_TRUE(holds(listed(), "  kept: ")) << listed();
}

TEST_F(KeptDrafts, AreDeletedWithAllThatWasMade) {
  choose("claws-mail", "Claws");
  const std::string name = keep(ReceiverHome::url({home_.stage("a.txt", "x")}));
  const std::string folder = given_folder();
  {
    const auto lock = locked(folder);
    for (const char* const action : {"--delete", "--again"}) {
      const Ended busy = compose({action, name});
      EXPECT_EQ(busy.status, 1);
      EXPECT_EQ(busy.errors, "quoll-compose: another program works on the draft " + name +
                                 "; try again later\n");
    }
  }
  EXPECT_EQ(compose({"--delete", name}).output, "The draft is deleted.\n");
  EXPECT_EQ(listed(), "");
  EXPECT_FALSE(fs::exists(folder));
  EXPECT_TRUE(home_.drafts().empty());
}

TEST_F(KeptDrafts, OneThatWaitsIsDeletedButNotOpened) {
  const std::string folder = home_.taken_folder() + "/20200101-000000";
  fs::create_directories(folder + "/files/0");
  std::ofstream(folder + "/command") << "quoll://compose?subject=x";
  const json list = json::parse(compose({"--list", "--json"}).output);
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0]["state"], "waiting");
  EXPECT_EQ(list[0]["path"], folder);
  EXPECT_EQ(list[0]["files"], folder + "/files");
  for (const char* const action : {"--open", "--again"}) {
    EXPECT_EQ(compose({action, "20200101-000000"}).errors,
              "quoll-compose: the draft 20200101-000000 is not written yet; quoll-compose --list "
              "tells its state\n");
  }
  {
    const auto lock = locked(folder);
    EXPECT_EQ(compose({"--delete", "20200101-000000"}).status, 1);
    EXPECT_TRUE(fs::exists(folder));
  }
  EXPECT_EQ(compose({"--delete", "20200101-000000"}).status, 0);
  EXPECT_TRUE(home_.taken().empty());
}

TEST_F(KeptDrafts, OneThatWasSetAsideSaysWhy) {
  const std::string folder = home_.taken_folder() + "/20200101-000000";
  fs::create_directories(folder);
  std::ofstream(folder + "/command") << "quoll://compose?subject=x";
  std::ofstream(folder + "/aside") << "a file has changed\n";
  EXPECT_EQ(compose({"--open", "20200101-000000"}).errors,
            "quoll-compose: the draft 20200101-000000 was set aside: a file has changed; what was "
            "shared lies in " +
                folder + "\n");
}

// The list reads one folder after the other, and drafts go from the one into the other.
TEST_F(KeptDrafts, OneThatLeavesTheTakenOnesIsListed) {
  fs::create_directories(home_.taken_folder() + "/20200101-000000");  // nothing is in it any more
  fs::create_directories(home_.drafts_folder());
  std::ofstream(home_.drafts_folder() + "/20200101-000000.eml") << "Subject: written\n\n";
  EXPECT_TRUE(holds(listed(), "  kept  written  ")) << listed();
}

TEST_F(KeptDrafts, TwoListsDoNotSeeEachOther) {
  const std::string folder = home_.taken_folder() + "/../given/20200101-000000";
  fs::create_directories(folder);
  fs::create_directories(home_.drafts_folder());
  std::ofstream(folder + "/offered") << "";
  std::ofstream(home_.drafts_folder() + "/20200101-000000.eml") << "Subject: x\n\n";
  const posix::UniqueFd list(::open(folder.c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(list.get(), LOCK_SH), 0);
  EXPECT_TRUE(holds(listed(), "  perhaps given  x  ")) << listed();
}

TEST_F(KeptDrafts, WhatAnEarlierRemovalLeftIsNoHindrance) {
  const std::string taken = home_.taken_folder() + "/";
  fs::create_directories(taken + "20200101-000000");
  std::ofstream(taken + "20200101-000000/command") << "quoll://compose?subject=x";
  fs::create_directories(taken + ".20200101-000000/files");
  EXPECT_EQ(compose({"--delete", "20200101-000000"}).output, "The draft is deleted.\n");
  EXPECT_EQ(listed(), "");
  EXPECT_TRUE(fs::is_empty(taken));
}

TEST_F(KeptDrafts, OneThatCannotBeDeletedIsSaidAndStaysListed) {
  const std::string waiting = home_.taken_folder() + "/20200101-000000";
  const auto expect_failure = [&](const std::string& name, const std::string& read_only,
                                  const std::string& path) {
    fs::permissions(read_only, fs::perms(0500));
    const Ended ended = compose_bound_by_modes({"--delete", name});
    fs::permissions(read_only, fs::perms(0700));
    EXPECT_EQ(ended.status, 1) << read_only << ended.output;
    EXPECT_EQ(ended.errors, "quoll-compose: " + path + " cannot be removed: permission denied\n");
    EXPECT_TRUE(holds(listed(), name)) << read_only;
  };
  const std::string name = keep(ReceiverHome::url({home_.stage("a.txt", "x")}));
  expect_failure(name, home_.drafts_folder(), home_.drafts().front());
  fs::create_directories(waiting);
  std::ofstream(waiting + "/command") << "quoll://compose?subject=x";
  expect_failure("20200101-000000", home_.taken_folder(), waiting);
  std::ofstream(home_.drafts_folder() + "/20200101-000000.eml") << "Subject: x\n\n";
  expect_failure("20200101-000000", home_.drafts_folder(),
                 home_.drafts_folder() + "/20200101-000000.eml");
  EXPECT_EQ(compose({"--delete", name}).status, 0);
}

// Else a draft would be promised that waits until somebody looks.
TEST_F(KeptDrafts, WhereNothingCanBeKeptNothingIsPromised) {
  ASSERT_EQ(compose({"--delete", keep()}).status, 0);
  for (const std::string& folder : {home_.drafts_folder(), home_.taken_folder()}) {
    fs::permissions(folder, fs::perms(0500));
    const Ended refused = compose_bound_by_modes({"quoll://compose?subject=x"});
    const Ended checked = compose_bound_by_modes({"--check"});
    fs::permissions(folder, fs::perms(0700));
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.output, "");
    EXPECT_EQ(refused.errors, "quoll-compose: nothing can be kept in " + folder +
                                  ": permission denied; make that folder writable for you\n");
    EXPECT_EQ(checked.errors, refused.errors);
    EXPECT_EQ(listed(), "");
    EXPECT_TRUE(home_.taken().empty());
  }
  fs::permissions(home_.given_folder(), fs::perms(0500));
  EXPECT_EQ(compose_bound_by_modes({"quoll://compose?subject=x"}).status, 0);
  fs::permissions(home_.given_folder(), fs::perms(0700));
  EXPECT_TRUE(holds(listed(), "  kept  x  ")) << "without a folder for the reason: " << listed();
}

// Else each start would write it anew, and say once more that it is kept.
TEST_F(KeptDrafts, OneThatCannotBeMovedIsNotSaidToBeKept) {
  const std::string waiting = home_.taken_folder() + "/20200101-000000";
  fs::create_directories(waiting);
  std::ofstream(waiting + "/command") << "quoll://compose?subject=x";
  fs::permissions(home_.taken_folder(), fs::perms(0500));
  const Ended ended = compose_bound_by_modes({"--resume"});
  fs::permissions(home_.taken_folder(), fs::perms(0700));
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.output, "Draft: " + waiting +
                              "\nThe draft 20200101-000000 waits: it cannot be moved out of " +
                              home_.taken_folder() + ": permission denied.\n");
  EXPECT_EQ(compose({"--resume"}).status, 0);
  EXPECT_TRUE(holds(listed(), "  kept: no mail client is chosen for mail links  "))
      << "the new reason" << listed();
}

TEST_F(KeptDrafts, NothingControlsTheTerminal) {
  const std::string folder = home_.taken_folder() + "/20200101-000000";
  fs::create_directories(folder);
  std::ofstream(folder + "/command") << "x";
  std::ofstream(folder + "/aside") << "a\x1b[31m\n";
  const Words calls[] = {{"--show", "/tmp/\x1b]0;x\a.eml"}, {"--x\x1b[31m"}, {"--list"}};
  for (const Words& call : calls) {
    const Ended ended = compose(call);
    const std::string said = ended.output + ended.errors;
    EXPECT_TRUE(holds(said, "\\x1B")) << said;
    EXPECT_FALSE(holds(said, "\x1b")) << said;
  }
}

TEST_F(KeptDrafts, OnlyANameOfADraftIsTaken) {
  const std::string name = keep();
  for (const std::string& wrong : {std::string("x"), std::string("../drafts/") + name,
                                   std::string("."), std::string(""), name + ".eml"}) {
    for (const char* const action : {"--open", "--ask", "--files", "--again", "--delete"}) {
      const Ended ended = compose({action, wrong});
      EXPECT_EQ(ended.status, 1) << wrong;
      EXPECT_EQ(ended.errors, "quoll-compose: there is no draft " + wrong +
                                  "; quoll-compose --list names those there are\n");
    }
  }
  EXPECT_EQ(home_.drafts().size(), 1U);
}

TEST_F(KeptDrafts, WithoutADesktopAPersonIsToldHowToReadIt) {
  const std::string name = keep();
  Environment environment = home_.bus.environment();
  environment["DISPLAY"] = std::nullopt;
  environment["WAYLAND_DISPLAY"] = std::nullopt;
  for (const char* const action : {"--open", "--again"}) {
    const Ended ended = run({QUOLL_COMPOSE, action, name}, environment);
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors,
              "quoll-compose: there is no desktop to open the draft on; quoll-compose --show " +
                  home_.drafts().front() + " prints it\n");
  }
}

/// A shell, its first option, and how it prints what may stand behind the option "$asked".
struct Shell {
  const char* program;
  const char* first;
  const char* ask;
};
constexpr Shell kShells[] = {
    {"bash", "--norc",
     "source '" QUOLL_COMPOSE_COMPLETION ".bash'; COMP_WORDS=(quoll-compose $asked '')\n"
     "COMP_CWORD=2; _quoll_compose; printf '%s\\n' \"${COMPREPLY[@]}\""},
    // What the file calls to make its offers prints the list that it is given for the option.
    {"zsh", "-f",
     "_arguments() { for spec; do [[ $spec == $asked'['* ]] && eval \"offered=${spec##*:}\" && "
     "print -lo $offered; done }\n"
     "source '" QUOLL_COMPOSE_COMPLETION ".zsh'"},
    {"fish", "--no-config",
     "source '" QUOLL_COMPOSE_COMPLETION ".fish'\n"
     "complete -C \"quoll-compose $asked \" | string replace -r '\\t.*' ''"},
};

TEST_F(KeptDrafts, CompletionKnowsTheNamesAndTheClients) {
  const std::string name = keep();
  choose("claws-mail", "Claws");
  add_client_program("bin/flatpak");
  add_client("org.mozilla.Thunderbird", "The Bird", "flatpak run org.mozilla.Thunderbird %u",
             "X-Flatpak=org.mozilla.Thunderbird\n");
  EXPECT_EQ(compose({"--client", "the bird"}).status, 1) << "it is listed and takes no draft";
  EXPECT_TRUE(holds(compose({"--clients"}).output, "The Bird"));
  fs::create_symlink(QUOLL_COMPOSE, programs_.path("bin/quoll-compose"));
  for (const Shell& shell : kShells) {
    if (run({"sh", "-c", std::string("command -v ") + shell.program}).status != 0) {
      continue;
    }
    const auto completed = [&](const std::string& option) {
      Environment environment = home_.bus.environment();
      environment["asked"] = option;
      return run({shell.program, shell.first, "-c", shell.ask}, environment).output;
    };
    for (const char* const option : {"--open", "--again", "--delete"}) {
      EXPECT_EQ(completed(option), name + "\n") << shell.program << ' ' << option;
    }
    EXPECT_EQ(completed("--client"), "claws-mail\ndefault\n") << shell.program;
  }
}

}  // namespace
}  // namespace quoll::test
