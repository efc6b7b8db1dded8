// A draft on its way to a program that only knows mail links: a browser, or any other.
#include <sys/statvfs.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>

#include "tests/integration/client_home.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;

class MailLink : public MailClientTest {
 protected:
  MailLink() { choose("firefox", "Firefox"); }

  [[nodiscard]] std::string draft_name() const {
    return fs::path(home_.drafts().front()).stem().string();
  }
  [[nodiscard]] std::string to_attach() const { return given_folder() + "/to-attach"; }
  [[nodiscard]] Words names_to_attach() const {
    Words names;
    for (const auto& entry : fs::directory_iterator(to_attach())) {
      names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
  }
  /// A program of the desktop on the bus: see desktop_double.cpp.
  [[nodiscard]] std::unique_ptr<Process> start_double(const std::string& role) const {
    auto process = std::make_unique<Process>(Words{DESKTOP_DOUBLE, role}, home_.bus.environment());
    EXPECT_EQ(process->read_line(), "ready");
    return process;
  }
};

TEST_F(MailLink, HasRecipientsSubjectAndText) {
  const auto ended = compose(
      {"quoll://"
       "compose?subject=S%20%26%20T&to=Ann%20%3Ca%2Bb%40x.org%3E%3Bc%40x.org%3B&cc=d%40x.org"
       "&htmlBody=%3Cp%3Eone%20%3Cb%3Ebold%3C%2Fb%3E%3C%2Fp%3E%3Cp%3Etwo%3C%2Fp%3E"});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_TRUE(holds(ended.output, "The draft was given to Firefox.\n")) << ended.output;
  EXPECT_EQ(given(), Words{"mailto:a+b@x.org,c@x.org?cc=d%40x.org&subject=S%20%26%20T&body="
                           "one%20bold%0D%0A%0D%0Atwo%0D%0A"});
  EXPECT_EQ(token_, "token=token-1");
  EXPECT_TRUE(is_marked());
  EXPECT_FALSE(fs::exists(to_attach()));
}

TEST_F(MailLink, CarriesNoFilesWhichIsSaid) {
  const auto ended =
      compose({ReceiverHome::url({home_.stage("a b", "first"), home_.stage("it's", "second")})});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_TRUE(holds(ended.output,
                    "The draft is kept: Firefox has it without its 2 files (a mail link carries "
                    "none); quoll-compose --files " +
                        draft_name() + " shows them.\n"))
      << ended.output;
  EXPECT_EQ(given(), Words{"mailto:?subject=S"});
  EXPECT_FALSE(is_marked()) << "the files are nowhere else";
  EXPECT_EQ(names_to_attach(), (Words{"a b", "it's"}));
  EXPECT_EQ(read_file(to_attach() + "/it's"), "second");
  EXPECT_TRUE(holds(compose({"--list"}).output,
                    "  kept: Firefox has it without its 2 files (a mail link carries none)  "));
}

TEST_F(MailLink, CarriesNoLongTextWhichIsSaid) {
  const std::string text(1980, 'x');
  const auto ended = compose({"quoll://compose?to=a%40x.org&subject=S&plainBody=" + text});
  EXPECT_TRUE(
      holds(ended.output, "is kept: Firefox has it without its text (too long for a mail link); "))
      << ended.output;
  EXPECT_EQ(given(), Words{"mailto:a@x.org?subject=S"});
  EXPECT_EQ(names_to_attach(), Words{"text.txt"});
  EXPECT_EQ(read_file(to_attach() + "/text.txt"), text + "\n");
}

TEST_F(MailLink, FilesOfOneNameAreAllThere) {
  fs::create_directories(home_.staging() + "/more");
  const auto ended = compose(
      {ReceiverHome::url({home_.stage("text.txt", "file"), home_.stage("more/text.txt", "other")},
                         "plainBody=" + std::string(2000, 'x'))});
  EXPECT_TRUE(holds(ended.output,
                    "without its text (too long for a mail link) and its 2 files (a mail link "
                    "carries none); "))
      << ended.output;
  EXPECT_EQ(names_to_attach(), (Words{"2 text.txt", "3 text.txt", "text.txt"}));
}

TEST_F(MailLink, ANameThatIsTakenIsNoReasonToStartNothing) {
  const auto ended =
      compose({ReceiverHome::url({home_.stage("text.txt", "file"), home_.stage("3 text.txt", "x")},
                                 "plainBody=" + std::string(2000, 'x'))});
  EXPECT_TRUE(holds(ended.output, "Firefox has it without its text")) << ended.output;
  EXPECT_EQ(names_to_attach(), (Words{"3 text.txt", "4 text.txt", "text.txt"}));
}

TEST_F(MailLink, AProgramThatFailsLeavesTheDraft) {
  choose("firefox", "Firefox", "exit 3");
  const auto ended = compose({ReceiverHome::url({home_.stage("a", "x")})});
  EXPECT_TRUE(holds(ended.output, "is kept: Firefox ended at once, with status 3; "))
      << ended.output;
  EXPECT_EQ(names_to_attach(), Words{"a"});
}

TEST_F(MailLink, IsGivenAgain) {
  choose("claws-mail", "Claws", "exit 3");
  EXPECT_TRUE(holds(compose({ReceiverHome::url({home_.stage("a", "x")})}).output, "is kept: "));
  fs::remove(home_.bus.path("given"));
  add_client_program("bin/firefox");
  const auto again = compose({"--again", draft_name(), "--client", "firefox"});
  EXPECT_EQ(again.status, 1);
  EXPECT_TRUE(holds(again.errors, "Firefox has it without its file (a mail link carries none); "))
      << again.errors;
  EXPECT_EQ(given(), Words{"mailto:?subject=S"});
  EXPECT_EQ(names_to_attach(), Words{"a"});
}

TEST_F(MailLink, ALineOfASubjectOrAnAddressBecomesNoField) {
  EXPECT_EQ(compose({"quoll://compose?subject=S%0D%0Abcc%3Ae%40x.org%26bcc%3De%40x.org"
                     "&to=a%40x.org%3Fbcc%3De%40x.org%3Bb%26c%40x.org%3B"})
                .status,
            0);
  const Words words = given();
  ASSERT_EQ(words.size(), 1U);
  EXPECT_EQ(words.front().find("bcc="), std::string::npos) << words.front();
  EXPECT_EQ(std::ranges::count(words.front(), '&'), 0) << words.front();
}

TEST_F(MailLink, OfADefaultThatListsNoMailLinksIsTakenAsWell) {
  home_.bus.add_entry("firefox",
                      "[Desktop Entry]\nType=Application\nName=Firefox\nExec=firefox --flag %u\n");
  EXPECT_TRUE(holds(compose({"quoll://compose?subject=x"}).output, "was given to Firefox.\n"));
  EXPECT_EQ(given(), Words{"mailto:?subject=x"});
}

// --- the files ---

TEST_F(MailLink, TheFilesAreShownInTheFileManager) {
  EXPECT_EQ(compose({ReceiverHome::url({home_.stage("a b", "x"), home_.stage("b", "x")})}).status,
            0);
  const auto manager = start_double("files");
  const auto ended = compose({"--files", draft_name()});
  EXPECT_EQ(ended.output, "The files are shown in the file manager.\n") << ended.errors;
  EXPECT_EQ(manager->read_line(), "file://" + to_attach() + "/a%20b");
  EXPECT_EQ(manager->read_line(), "file://" + to_attach() + "/b");
  EXPECT_EQ(manager->read_line(), "token=token-1");
}

TEST_F(MailLink, WhereNoneSelectsTheFolderIsOpened) {
  EXPECT_EQ(compose({ReceiverHome::url({home_.stage("a", "x")})}).status, 0);
  const auto without = compose({"--files", draft_name()});
  EXPECT_EQ(without.status, 1);
  EXPECT_EQ(without.errors,
            "quoll-compose: no file manager is here; the files lie in " + to_attach() + "\n");
  fs::remove(home_.bus.path("given"));
  add_client_program("bin/folders");
  home_.bus.add_entry("folders",
                      "[Desktop Entry]\nType=Application\nName=F\nExec=folders %u\n"
                      "MimeType=inode/directory;\n");
  std::ofstream(home_.bus.path("config/mimeapps.list"), std::ios::app)
      << "inode/directory=folders.desktop\n";
  EXPECT_EQ(compose({"--files", draft_name()}).status, 0);
  const Words words = given();
  ASSERT_EQ(words.size(), 1U);
  EXPECT_TRUE(words.front() == to_attach() || words.front() == "file://" + to_attach())
      << words.front();
}

TEST_F(MailLink, FilesOfAnyKeptDraftAreShown) {
  fs::remove(home_.bus.path("config/mimeapps.list"));
  fs::remove(home_.bus.data_home() + "/applications/firefox.desktop");
  EXPECT_TRUE(holds(compose({ReceiverHome::url({home_.stage("a", "x")})}).output,
                    "no mail client is chosen"));
  const auto manager = start_double("files");
  EXPECT_EQ(compose({"--files", draft_name()}).status, 0);
  EXPECT_EQ(manager->read_line(), "file://" + to_attach() + "/a");
  fs::remove_all(given_folder());
  const auto gone = compose({"--files", draft_name()});
  EXPECT_EQ(gone.status, 1);
  EXPECT_EQ(gone.errors,
            "quoll-compose: there are no files of the draft beside its message file; quoll-compose "
            "--open " +
                draft_name() + " opens that\n");
}

// --- another program ---

TEST_F(MailLink, APersonChoosesAProgram) {
  EXPECT_EQ(compose({ReceiverHome::url({home_.stage("a", "x")})}).status, 0);
  struct Row {
    const char* answer;
    const char* told;
  };
  const Row rows[] = {{"0", "The draft was opened with the program that was chosen.\n"},
                      {"1", "No program was chosen.\n"}};
  for (const Row& row : rows) {
    const auto portal = start_double(row.answer);
    EXPECT_EQ(compose({"--ask", draft_name()}).output, row.told);
    EXPECT_EQ(portal->read_line(), "asked: " + home_.drafts().front());
    EXPECT_EQ(portal->read_line(), "token=token-1");
  }
}

TEST_F(MailLink, WhereNobodyIsAskedWhatOpensMessageFilesDoes) {
  EXPECT_EQ(compose({ReceiverHome::url({home_.stage("a", "x")})}).status, 0);
  const auto without = compose({"--ask", draft_name()});
  EXPECT_EQ(without.status, 1);
  EXPECT_TRUE(holds(without.errors, "nothing opens message files here")) << without.errors;
  add_viewer();
  const auto portal = start_double("2");
  EXPECT_EQ(compose({"--ask", draft_name()}).output, "The draft was opened with A Viewer.\n");
}

// --- what no mail carries ---

// The message file is a third larger than its files. Holes of a staged file take no room.
TEST_F(MailLink, WhatNoMailCarriesIsKeptWithItsFiles) {
  if (std::getenv("QUOLL_LARGE_FILES") == nullptr) {
    GTEST_SKIP() << "QUOLL_LARGE_FILES is not set: it takes 20 s and 4 GB";
  }
  constexpr std::uintmax_t kFile = 1'600'000'000;
  constexpr std::uintmax_t kRoom = 4'000'000'000;
  choose("thunderbird", "The Bird");
  const std::string large = home_.stage("large.iso", "");
  fs::resize_file(large, kFile);
  if (fs::space(large).available < kRoom) {
    GTEST_SKIP() << "the disk has no room for it";
  }
  const auto ended = compose({ReceiverHome::url({large})});
  EXPECT_EQ(ended.status, 0) << ended.errors;
  EXPECT_TRUE(holds(ended.output,
                    "The draft is kept: it has 2.2 GB, and no mail carries more than 2 GB; "
                    "quoll-compose --files " +
                        draft_name() + " shows its files.\n"))
      << ended.output;
  EXPECT_FALSE(holds(ended.output, "25 MB")) << "one size is enough";
  EXPECT_FALSE(was_started());
  EXPECT_EQ(fs::file_size(to_attach() + "/large.iso"), kFile);
  EXPECT_TRUE(holds(compose({"--list"}).output,
                    "  kept: it has 2.2 GB, and no mail carries more than 2 GB  "));
}

}  // namespace
}  // namespace quoll::test
