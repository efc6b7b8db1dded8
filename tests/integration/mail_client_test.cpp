// A draft on its way to the user's mail client: scripts in place of the clients, real entries.
#include <algorithm>
#include <chrono>
#include <ctime>

#include "tests/integration/client_home.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;

std::string path_of_uri(const std::string& uri) {
  EXPECT_TRUE(uri.starts_with("file:///")) << uri;
  return *foundation::percent_decode(uri.substr(7));
}

TEST_F(MailClientTest, ThunderbirdAndItsKinGetTheMessageFile) {
  choose("thunderbird", "The Bird");
  const auto ended = compose({"quoll://compose?subject=x"});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_TRUE(holds(ended.output, "The draft was given to The Bird.\n")) << ended.output;
  const Words words = given();
  ASSERT_EQ(words.size(), 1U);
  const std::string draft = home_.drafts().front();
  EXPECT_TRUE(words.front() == draft || words.front() == "file://" + draft) << words.front();
  EXPECT_EQ(token_, "token=token-1");
  EXPECT_TRUE(is_marked());
}

TEST_F(MailClientTest, TheOthersGetSubjectTextAndFiles) {
  struct Row {
    const char* program;
    std::string name;        ///< of the second file, as the client gets it
    std::size_t attachment;  ///< which word names it
    std::size_t words;
  };
  const Row rows[] = {
      {"kmail", "it's, \"q\"\u240a#1%20;", 4, 7},
      {"claws-mail", "it's, \u201dq\u201d\u240a#1%20;", 4, 5},
      {"mutt", "it's, \"q\"\u240a#1%20;", 6, 9},
  };
  for (const Row& row : rows) {
    choose(row.program, "X");
    const auto ended = compose({ReceiverHome::url(
        {home_.stage("a b", "first"), home_.stage("it's, \"q\"\n#1%20;", "second")},
        "subject=S&htmlBody=%3Cb%3Ebold%3C%2Fb%3E&to=a%40x.org%3B")});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_TRUE(holds(ended.output, "The draft was given to X.\n")) << ended.output;
    const Words words = given();
    ASSERT_EQ(words.size(), row.words) << row.program;
    std::string word = words[row.attachment];
    if (word.starts_with("--attach=")) {
      word = path_of_uri(word.substr(9));
    }
    EXPECT_EQ(fs::path(word).filename().string(), row.name) << row.program;
    EXPECT_EQ(read_file(word), "second") << "it is there when the client has ended";
    EXPECT_TRUE(is_marked()) << row.program;
    fs::remove(home_.bus.path("given"));
    for (const auto& draft : home_.drafts()) {
      fs::remove(draft);
    }
  }
}

TEST_F(MailClientTest, EvolutionGetsOneLink) {
  choose("evolution", "X");
  EXPECT_EQ(compose({ReceiverHome::url({home_.stage("a&b", "first")}, "plainBody=t")}).status, 0);
  const Words words = given();
  ASSERT_EQ(words.size(), 1U);
  const std::string head = "mailto:?subject=a%26b&body=t&attach=";
  ASSERT_TRUE(words.front().starts_with(head)) << words.front();
  EXPECT_EQ(read_file(path_of_uri(*foundation::percent_decode(words.front().substr(head.size())))),
            "first");
}

TEST_F(MailClientTest, AClientOfTheTerminalIsStartedInOne) {
  // Whichever of them the desktop's library knows: it skips its own options and runs the rest.
  for (const char* terminal : {"xdg-terminal-exec", "kgx", "gnome-terminal", "mate-terminal",
                               "xfce4-terminal", "tilix", "konsole", "nxterm", "xterm"}) {
    add_program(std::string("bin/") + terminal,
                "while [ \"${1#-}\" != \"$1\" ]; do shift; done\nin_terminal=1 exec \"$@\"\n");
  }
  add_client_program("bin/mutt",
                     "printf %s \"$in_terminal\" > '" + home_.bus.path("terminal") + "'");
  add_client("mutt", "mutt", "mutt %u", "Terminal=true\n");
  make_default("mutt");
  EXPECT_EQ(compose({"quoll://compose?subject=it%27s&plainBody=one%0Atwo"}).status, 0);
  const Words words = given();
  ASSERT_EQ(words.size(), 5U);
  EXPECT_EQ(words[1], "it's");
  EXPECT_EQ(read_file(words[3]), "one\ntwo\n");
  EXPECT_EQ(words[4], "--");
  EXPECT_EQ(read_file(home_.bus.path("terminal")), "1");
  EXPECT_FALSE(is_marked()) << "a terminal ends well whatever its program did";
}

TEST_F(MailClientTest, AChosenProgramThatOpensNoMailLinksLeavesTheDraft) {
  add_viewer();
  fs::create_directories(home_.bus.path("config/quoll-compose"));
  std::ofstream(home_.bus.path("config/quoll-compose/mail-client")) << "viewer.desktop\n";
  const auto ended = compose({"quoll://compose?subject=x"});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_TRUE(holds(ended.output, "The draft is kept: A Viewer cannot be given a draft"))
      << ended.output;
  EXPECT_FALSE(was_started());
}

TEST_F(MailClientTest, ABccThatAClientDoesNotTakeIsSaid) {
  choose("sylpheed", "S");
  const auto ended = compose({"quoll://compose?subject=x&bcc=a%40x.org"});
  EXPECT_TRUE(
      holds(ended.output, "S takes no Bcc, and was not given any; the message file names all.\n"))
      << ended.output;
  EXPECT_EQ(given(), (Words{"--compose", "mailto:?subject=x"}));
  EXPECT_FALSE(holds(compose({"quoll://compose?subject=x&cc=a%40x.org"}).output, "Bcc"));
}

TEST_F(MailClientTest, WithoutAClientTheDraftIsKept) {
  const auto ended = compose({"quoll://compose?subject=x"});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_TRUE(holds(ended.output, "The draft is kept: no mail client is chosen")) << ended.output;
}

TEST_F(MailClientTest, AClientThatFailsAtOnceLeavesTheDraft) {
  struct Row {
    const char* script;
    const char* told;
  };
  const Row rows[] = {
      {"exit 3",
       "The draft is kept: X ended at once, with status 3; open or import the file there.\n"},
      {"kill -9 $$",
       "The draft is kept: X ended at once, by signal 9; open or import the file there.\n"},
  };
  for (const Row& row : rows) {
    choose("claws-mail", "X", row.script);
    const auto ended = compose({ReceiverHome::url({home_.stage("a", "x")})});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_TRUE(holds(ended.output, row.told)) << ended.output;
    ASSERT_EQ(home_.drafts().size(), 1U);
    EXPECT_TRUE(holds(ReceiverHome::read_message(home_.drafts().front()), "\"a\" 78\n"));
    EXPECT_FALSE(is_marked());
    fs::remove(home_.drafts().front());
  }
}

TEST_F(MailClientTest, AnEndIsSeenWhateverStartedTheProgram) {
  choose("claws-mail", "X", "exit 3");
  Environment environment = home_.bus.environment();
  const auto ended = run({"python3", "-c",
                          "import os, signal, sys\nsignal.signal(signal.SIGCHLD, signal.SIG_IGN)\n"
                          "os.execv(sys.argv[1], sys.argv[1:])",
                          QUOLL_COMPOSE, "quoll://compose?subject=x"},
                         environment);
  EXPECT_TRUE(holds(ended.output, "X ended at once, with status 3"))
      << ended.output << ended.errors;
}

TEST_F(MailClientTest, AClientThatStaysHasTheDraft) {
  choose("thunderbird", "X", "exec sleep 5");
  EXPECT_TRUE(holds(compose({"quoll://compose?subject=x"}).output, "was given to X.\n"));
  EXPECT_TRUE(is_marked());
}

// --- clients in a sandbox ---

TEST_F(MailClientTest, AFlatpakGetsTheMessageFilePassedOn) {
  add_client_program("bin/flatpak");
  add_client("org.mozilla.Thunderbird", "The Bird",
             "flatpak run --file-forwarding org.mozilla.Thunderbird @@u %u @@", "X-Flatpak=x\n");
  make_default("org.mozilla.Thunderbird");
  EXPECT_TRUE(holds(compose({"quoll://compose?subject=x"}).output, "was given to The Bird.\n"));
  Words words = given();
  ASSERT_EQ(words.size(), 6U);
  const std::string draft = home_.drafts().front();
  EXPECT_TRUE(words[4] == draft || words[4] == "file://" + draft) << words[4];
  words.erase(words.begin() + 4);
  EXPECT_EQ(words, (Words{"run", "--file-forwarding", "org.mozilla.Thunderbird", "@@u", "@@"}));
}

TEST_F(MailClientTest, AFlatpakThatSeesNoFileIsSaid) {
  add_client_program("bin/flatpak");
  add_client("org.mozilla.Thunderbird", "The Bird", "flatpak run org.mozilla.Thunderbird %u");
  make_default("org.mozilla.Thunderbird");
  const auto ended = compose({"quoll://compose?subject=x"});
  EXPECT_TRUE(holds(ended.output,
                    "The draft is kept: The Bird runs in a sandbox and cannot read "
                    "the draft, so copy it to where The Bird can and open it there.\n"))
      << ended.output;
  EXPECT_FALSE(was_started());
}

TEST_F(MailClientTest, AFlatpakOfPathsGetsADraftWithoutFilesOnly) {
  add_client_program("bin/flatpak");
  add_client("org.gnome.Evolution", "E",
             "flatpak run --file-forwarding org.gnome.Evolution @@u %U @@");
  make_default("org.gnome.Evolution");
  const auto kept = compose({ReceiverHome::url({home_.stage("a", "x")})});
  EXPECT_TRUE(holds(kept.output,
                    "The draft is kept: E runs in a sandbox and cannot read the "
                    "attachments, so open or import the file there.\n"))
      << kept.output;
  EXPECT_FALSE(was_started());
  EXPECT_TRUE(holds(compose({"quoll://compose?subject=x"}).output, "was given to E.\n"));
  EXPECT_EQ(given(),
            (Words{"run", "--file-forwarding", "org.gnome.Evolution", "mailto:?subject=x"}));
}

TEST_F(MailClientTest, ASnapGetsACopyThatItSees) {
  add_client_program("snap/bin/thunderbird");
  add_client("thunderbird_thunderbird", "The Bird",
             "env HINT=x " + programs_.path("snap/bin/thunderbird") + " %u");
  make_default("thunderbird_thunderbird");
  EXPECT_TRUE(holds(compose({"quoll://compose?subject=x"}).output, "was given to The Bird.\n"));
  const std::string draft = home_.drafts().front();
  const std::string copy = home_.bus.path("home/snap/thunderbird/common/quoll-compose/") +
                           fs::path(draft).filename().string();
  const Words words = given();
  ASSERT_EQ(words.size(), 1U);
  EXPECT_TRUE(words.front() == copy || words.front() == "file://" + copy) << words.front();
  EXPECT_EQ(read_file(copy), read_file(draft));
}

// A snap may put a link into its own folder; the receiver can write where the snap cannot.
TEST_F(MailClientTest, TheLinkOfASnapIsNotFollowed) {
  add_client_program("snap/bin/thunderbird");
  add_client("thunderbird_thunderbird", "The Bird",
             "env HINT=x " + programs_.path("snap/bin/thunderbird") + " %u");
  make_default("thunderbird_thunderbird");
  const std::string own = home_.bus.path("home/Public");
  const std::string common = home_.bus.path("home/snap/thunderbird/common");
  fs::create_directories(own);
  fs::permissions(own, fs::perms(0755));
  fs::create_directories(common);
  fs::create_directory_symlink(own, common + "/quoll-compose");
  EXPECT_TRUE(holds(compose({"quoll://compose?subject=x"}).output, "is kept: "));
  EXPECT_EQ(fs::status(own).permissions(), fs::perms(0755));
  EXPECT_TRUE(fs::is_empty(own));
}

// --- the choice ---

TEST_F(MailClientTest, TheClientIsASetting) {
  choose("claws-mail", "Claws");
  choose("thunderbird", "The Bird");
  EXPECT_EQ(compose({"--clients"}).output,
            "* The Bird (thunderbird.desktop): HTML and attachments, the default for mail "
            "links\n  Claws (claws-mail.desktop): plain text and attachments\n");
  for (const char* name : {"claws-mail.desktop", "claws-mail", "CLAWS"}) {
    const auto chosen = compose({"--client", name});
    EXPECT_EQ(chosen.status, 0) << chosen.errors;
    EXPECT_EQ(chosen.output,
              "Drafts go to Claws (claws-mail.desktop): plain text and attachments.\n");
    EXPECT_EQ(read_file(home_.bus.path("config/quoll-compose/mail-client")),
              "claws-mail.desktop\n");
  }
  EXPECT_TRUE(holds(compose({"--clients"}).output,
                    "* Claws (claws-mail.desktop): plain text and attachments, chosen\n"));
  EXPECT_TRUE(holds(compose({"quoll://compose?subject=x"}).output, "was given to Claws.\n"));
  for (const char* name : {"default", ""}) {
    EXPECT_EQ(compose({"--client", name}).output,
              "Drafts go to the default for mail links, The Bird (thunderbird.desktop).\n");
    EXPECT_FALSE(fs::exists(home_.bus.path("config/quoll-compose/mail-client")));
  }
}

TEST_F(MailClientTest, AChoiceThatCannotBeIsSaid) {
  choose("thunderbird", "The Bird");
  const auto ended = compose({"--client", "Nobody\x1b[2J"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors,
            "quoll-compose: there is no mail client Nobody\\x1B[2J; choose The Bird "
            "(thunderbird.desktop)\n");
  EXPECT_FALSE(fs::exists(home_.bus.path("config/quoll-compose")));
  std::ofstream(home_.bus.path("config/quoll-compose")) << "a file where the folder belongs";
  const auto kept = compose({"--client", "thunderbird"});
  EXPECT_EQ(kept.status, 1);
  EXPECT_TRUE(holds(kept.errors, "mail-client cannot be written: ")) << kept.errors;
}

TEST_F(MailClientTest, AProgramThatTakesNoDraftIsNotChosen) {
  choose("claws-mail", "Claws");
  add_client_program("bin/viewer");
  home_.bus.add_entry("viewer",
                      "[Desktop Entry]\nType=Application\nName=A Viewer\nExec=viewer %u\n");
  EXPECT_EQ(compose({"--client", "claws"}).status, 0);
  const Ended ended = compose({"--client", "viewer"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.errors,
            "quoll-compose: A Viewer (viewer.desktop) takes no drafts: cannot be given a draft; "
            "choose Claws (claws-mail.desktop)\n");
  EXPECT_TRUE(holds(compose({"--clients"}).output, "* Claws")) << "the choice stays";
}

TEST_F(MailClientTest, AChosenClientThatIsGoneIsSaidAndTheDefaultTaken) {
  choose("thunderbird", "The Bird");
  fs::create_directories(home_.bus.path("config/quoll-compose"));
  for (const std::string setting : {"gone.desktop\n", "../../x", "\xff\x1b", "no-suffix"}) {
    std::ofstream(home_.bus.path("config/quoll-compose/mail-client")) << setting;
    const auto ended = compose({"quoll://compose?subject=x"});
    EXPECT_TRUE(holds(ended.output, "was given to The Bird.\n")) << ended.output;
    EXPECT_TRUE(holds(ended.output, " is not there any more; quoll-compose --clients lists"))
        << ended.output;
    EXPECT_FALSE(holds(ended.output, "\x1b"));
    EXPECT_TRUE(holds(compose({"--clients"}).output, " was chosen and is not there any more.\n"));
  }
}

TEST_F(MailClientTest, WithoutClientsTheListSaysSo) {
  EXPECT_EQ(compose({"--clients"}).output, "No program opens mail links.\n");
  EXPECT_EQ(compose({"--client", "claws"}).errors,
            "quoll-compose: there is no mail client claws; none is there that can be chosen\n");
  EXPECT_EQ(compose({"--client", "default"}).output,
            "Drafts go to the default for mail links, which is not set.\n");
  EXPECT_EQ(compose({"--clients", "--client", "x"}).status, 2);
}

// --- what is told, and what is kept ---

TEST_F(MailClientTest, ADraftWithoutASubjectIsNamedAfterItsFiles) {
  struct Row {
    Words files;
    const char* more;
    const char* subject;
  };
  const Row rows[] = {
      {{"report.pdf"}, "", "Subject: report.pdf\n"},
      {{"report.pdf"}, "subject=%20%0A", "Subject: report.pdf\n"},
      {{"report.pdf", "b", "c"}, "", "Subject: report.pdf and 2 more\n"},
      {{"a\nb"}, "", "Subject: a b\n"},
      {{"report.pdf"}, "subject=Mine", "Subject: Mine\n"},
      {{}, "", "Subject: (none)\n"},
  };
  for (const Row& row : rows) {
    Words paths;
    for (const auto& name : row.files) {
      paths.push_back(home_.stage(name, "x"));
    }
    const auto ended = home_.compose({ReceiverHome::url(paths, row.more)});
    EXPECT_TRUE(holds(ended.output, row.subject)) << ended.output;
  }
}

TEST_F(MailClientTest, ADraftThatServersRefuseIsSaid) {
  const std::string part(1U << 20U, 'x');
  const auto with_mebibytes = [&](int count) {
    std::string content;
    for (int i = 0; i < count; ++i) {
      content += part;
    }
    return home_.compose({ReceiverHome::url({home_.stage("big", content)})}).output;
  };
  EXPECT_TRUE(holds(with_mebibytes(18),
                    "The draft has 25.8 MB, and many mail servers refuse more than 25 MB.\n"));
  EXPECT_FALSE(holds(with_mebibytes(17), "refuse"));
}

TEST_F(MailClientTest, ALaterRunCleansWhatWasGivenSevenDaysAgo) {
  choose("claws-mail", "X");
  EXPECT_EQ(compose({ReceiverHome::url({home_.stage("a", "x")})}).status, 0);
  ASSERT_EQ(home_.drafts().size(), 1U);
  // Under a name that no draft of this second gets.
  const std::string draft = home_.drafts_folder() + "/20200101-000000.eml";
  const std::string folder = fs::path(given_folder()).replace_filename("20200101-000000");
  fs::rename(given_folder(), folder);
  fs::rename(home_.drafts().front(), draft);
  const auto age = [&](int days) {
    for (const std::string& note : {folder + "/offered", folder + "/given"}) {
      std::ofstream(note) << "an-earlier-start-of-the-system 5\n";
      fs::last_write_time(note,
                          fs::file_time_type::clock::now() - std::chrono::hours(24 * days - 1));
    }
  };
  age(7);
  EXPECT_EQ(compose({"quoll://compose?subject=second"}).status, 0);
  EXPECT_TRUE(fs::exists(draft));
  EXPECT_TRUE(fs::exists(folder + "/files/0/a"));
  age(8);
  EXPECT_EQ(compose({"quoll://compose?subject=third"}).status, 0);
  EXPECT_FALSE(fs::exists(draft));
  EXPECT_FALSE(fs::exists(folder));
  EXPECT_EQ(home_.drafts().size(), 2U);
}

TEST_F(MailClientTest, ANameThatWasGivenIsNotUsedAgain) {
  // Every name of the seconds to come, as when the clock was set back.
  const std::time_t now = std::time(nullptr);
  for (std::time_t time = now; time < now + 120; ++time) {
    std::tm local{};
    localtime_r(&time, &local);
    char name[32];
    std::strftime(name, sizeof(name), "%Y%m%d-%H%M%S", &local);
    fs::create_directories(home_.bus.data_home() + "/quoll-compose/given/" + name);
  }
  EXPECT_EQ(compose({"quoll://compose?subject=x"}).status, 0);
  ASSERT_EQ(home_.drafts().size(), 1U);
  EXPECT_TRUE(home_.drafts().front().ends_with("-1.eml")) << home_.drafts().front();
}

}  // namespace
}  // namespace quoll::test
