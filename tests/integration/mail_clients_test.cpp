// What a desktop entry says of a mail client.
#include "quoll/linux/gio/mail_clients.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temporary_folder.h"

namespace quoll::gio {
namespace {

MailClient client_of(const std::string& name, const std::string& lines) {
  const KeyFileHandle file(g_key_file_new());
  const std::string text = "[Desktop Entry]\nType=Application\nName=" + name + "\n" + lines + "\n";
  g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr);
  EntryHandle entry(g_desktop_app_info_new_from_keyfile(file.get()));
  EXPECT_TRUE(entry) << lines;
  return mail_client_of(std::move(entry));
}

TEST(MailClients, AreKnownByTheirPrograms) {
  struct Row {
    const char* reason;
    const char* exec;
    DraftWay way;
  };
  const Row rows[] = {
      {"the bird", "bin/thunderbird", DraftWay::kMessageFile},
      {"with a suffix", "bin/Thunderbird-esr", DraftWay::kMessageFile},
      {"one of its kin", "bin/betterbird", DraftWay::kMessageFile},
      {"an old name of it", "bin/icedove", DraftWay::kMessageFile},
      {"a program of its own", "bin/evolution", DraftWay::kEvolution},
      {"a program of its own", "bin/kmail", DraftWay::kKMail},
      {"a program of its own", "bin/claws-mail", DraftWay::kClaws},
      {"a program of its own", "bin/mutt", DraftWay::kMutt},
      {"one that takes the same options", "bin/neomutt", DraftWay::kMutt},
      {"a program of its own", "bin/sylpheed", DraftWay::kSylpheed},
      {"a program of its own", "bin/balsa", DraftWay::kBalsa},
      {"a program of its own", "bin/aerc", DraftWay::kAerc},
      {"one that is not known", "bin/geary", DraftWay::kNone},
      {"a folder that only sounds like one", "mutt/mail", DraftWay::kNone},
  };
  const test::TemporaryFolder folder;
  for (const Row& row : rows) {
    std::filesystem::create_directories(std::filesystem::path(folder.path(row.exec)).parent_path());
    std::filesystem::permissions(folder.write(row.exec, "#!/bin/sh\n"),
                                 std::filesystem::perms::owner_all);
    EXPECT_EQ(client_of("X", "Exec=" + folder.path(row.exec) + " %u").way, row.way) << row.reason;
  }
}

TEST(MailClients, AnyProgramThatOpensMailLinksTakesThem) {
  EXPECT_EQ(client_of("X", "Exec=sh %u\nMimeType=text/html;x-scheme-handler/mailto;").way,
            DraftWay::kMailLink);
  EXPECT_EQ(client_of("X", "Exec=sh %u\nMimeType=text/html;").way, DraftWay::kNone);
}

TEST(MailClients, SandboxesAreSeen) {
  struct Row {
    const char* reason;
    const char* lines;
    bool is_flatpak;
    bool passes_files_on;
    const char* snap;
  };
  const Row rows[] = {
      {"none", "Exec=sh %u", false, false, ""},
      {"a Flatpak that passes files on",
       "X-Flatpak=org.x.Mail\nExec=sh --file-forwarding a @@u %u @@", true, true, ""},
      {"a Flatpak that does not", "X-Flatpak=org.x.Mail\nExec=sh org.x.Mail %u", true, false, ""},
      {"a snap by its key", "X-SnapInstanceName=thunderbird\nExec=env X=1 sh %u", false, false,
       "thunderbird"},
      {"a snap by its program", "Exec=env HINT=x /snap/bin/mail-client.mail %u", false, false,
       "mail-client"},
      {"a snap by its only program", "Exec=env HINT=x /snap/bin/mail %u", false, false, "mail"},
  };
  for (const Row& row : rows) {
    const Sandbox sandbox = client_of("X", row.lines).sandbox;
    EXPECT_EQ(sandbox.is_flatpak, row.is_flatpak) << row.reason;
    EXPECT_EQ(sandbox.passes_files_on, row.passes_files_on) << row.reason;
    EXPECT_EQ(sandbox.snap, row.snap) << row.reason;
    EXPECT_EQ(sandbox.is_any(), row.is_flatpak || *row.snap != '\0') << row.reason;
    MailClient client{.entry = nullptr,
                      .id = "",
                      .name = "",
                      .way = {},
                      .is_in_terminal = false,
                      .sandbox = sandbox};
    client.way = DraftWay::kMessageFile;
    EXPECT_EQ(client.reads_files(), !row.is_flatpak || row.passes_files_on) << row.reason;
    client.way = DraftWay::kClaws;
    EXPECT_EQ(client.reads_files(), !sandbox.is_any()) << row.reason;
  }
}

}  // namespace
}  // namespace quoll::gio
