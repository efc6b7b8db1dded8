// What a person is told of a draft that came by the bus, where nobody sees a terminal.
#include <thread>

#include "apps/compose/notifications.h"
#include "quoll/linux/gio/launcher.h"
#include "tests/integration/client_home.h"
#include "tests/support/recorders.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kName = "it.vorlent.quoll2";

class ComposeNotice : public MailClientTest {
 protected:
  ComposeNotice() {
    home_.bus.add_service(kName, std::string(QUOLL_COMPOSE) + " --service --idle 0.2");
    desktop_ = std::make_unique<Process>(Words{NOTIFICATION_DOUBLE}, home_.bus.environment());
    EXPECT_EQ(desktop_->read_line(), "ready");
  }
  void open(const std::string& url) {
    Environment environment = home_.bus.environment();
    environment["XDG_ACTIVATION_TOKEN"] = "token-2";
    const ScopedEnvironment scoped(environment);
    const platform::ScopedDesktop desktop({.log = std::make_shared<RecordingLog>()});
    constexpr auto kForeground = platform::NSWorkspaceLaunchAllowingClassicStartup;
    EXPECT_TRUE(gio::start_launcher({}, 60s)->openURLs({foundation::NSURL::URLWithString(url)},
                                                       kName, kForeground));
  }
  [[nodiscard]] std::string line() const { return desktop_->read_line(); }
  [[nodiscard]] std::string only_draft() const {
    return home_.drafts().size() == 1 ? home_.drafts().front() : "not one draft";
  }

  std::unique_ptr<Process> desktop_;
};

TEST_F(ComposeNotice, AFileFromElsewhereIsRefusedAndSaid) {
  choose("thunderbird", "The Bird");
  open(ReceiverHome::url({"/etc/passwd", home_.stage("a", "x"), "/etc/<b>"}));
  EXPECT_EQ(
      line(),
      "Not everything is in the draft|Left out: /etc/passwd: it is outside the shared folder");
  EXPECT_EQ(line(), "Left out: /etc/&lt;b&gt;: it is outside the shared folder");
  EXPECT_TRUE(holds(home_.read_only_draft(), "\"a\" 78\n")) << home_.read_only_draft();
  EXPECT_FALSE(holds(home_.read_only_draft(), "passwd"));
}

TEST_F(ComposeNotice, ManyFilesFromElsewhereAreCounted) {
  choose("thunderbird", "The Bird");
  open(ReceiverHome::url(Words(2000, "/etc/passwd")));
  for (int shown = 0; shown < 5; ++shown) {
    EXPECT_TRUE(holds(line(), "Left out: /etc/passwd: "));
  }
  EXPECT_EQ(line(), "Left out: 1995 more");
}

TEST(ComposeNotices, ALongRefusalIsCutShort) {
  const std::string body = compose::notification_of_refusal(std::string(100'000, 'x')).body;
  EXPECT_EQ(body.size(), 400U);
  EXPECT_TRUE(body.starts_with("xxx") && body.ends_with("…")) << body;
}

TEST_F(ComposeNotice, ADraftThatIsKeptIsSaidWithItsPlace) {
  open("quoll://compose?subject=x");
  EXPECT_EQ(line(), "The draft is kept|no mail client is chosen for mail links.");
  EXPECT_EQ(line(), only_draft());
}

TEST_F(ComposeNotice, AClientThatFailsAtOnceIsSaid) {
  choose("claws-mail", "Claws", "exit 1");
  open("quoll://compose?subject=x");
  EXPECT_EQ(line(),
            "The draft is kept|Claws ended at once, with status 1; open or import the file "
            "there.");
  EXPECT_EQ(line(), only_draft());
}

TEST_F(ComposeNotice, AChosenClientThatIsGoneIsSaid) {
  choose("thunderbird", "The Bird");
  EXPECT_EQ(compose({"--client", "thunderbird"}).status, 0);
  std::filesystem::remove(home_.bus.data_home() + "/applications/thunderbird.desktop");
  choose("claws-mail", "Claws");
  open("quoll://compose?subject=x");
  EXPECT_EQ(line(),
            "A draft was made|The chosen mail client thunderbird.desktop is not there any more.");
}

TEST_F(ComposeNotice, ADraftThatServersRefuseIsSaid) {
  choose("thunderbird", "The Bird");
  open(ReceiverHome::url({home_.stage("big", std::string(19'000'000, 'x'))}));
  EXPECT_EQ(
      line(),
      "A draft was made|The draft has 26.0 MB, and many mail servers refuse more than 25 MB.");
}

TEST_F(ComposeNotice, ARecipientWithoutAnAddressIsSaid) {
  choose("claws-mail", "Claws");
  open("quoll://compose?subject=x&to=Ann%3Bb%40x.org&cc=two%20words");
  const Words words = given();
  open("quoll://compose?attachment_0=%2Fnowhere");
  EXPECT_EQ(line(),
            "A draft was made|2 recipients have no address and were not given to Claws; the "
            "message file names all.")
      << "of the first one";
  ASSERT_EQ(words.size(), 2U);
  EXPECT_TRUE(words[1].starts_with("mailto:b%40x.org?")) << words[1];
}

TEST_F(ComposeNotice, ACommandThatIsRefusedIsSaid) {
  EXPECT_NE(
      run({"gdbus", "call", "--session", "--dest", kName, "--object-path", "/it/vorlent/quoll2",
           "--method", "org.freedesktop.Application.Open", "['quoll://send?to=a']", "{}"},
          home_.bus.environment())
          .status,
      0);
  const std::string told = line();
  EXPECT_TRUE(told.starts_with("There is no draft|the command ") &&
              holds(told, " needs the mail application; "))
      << told;
}

TEST_F(ComposeNotice, ALinkThatTheEntryOpensIsSaidAsWell) {
  choose("thunderbird", "The Bird");
  EXPECT_EQ(compose({ReceiverHome::url({"/etc/passwd"})}).status, 1);
  EXPECT_EQ(
      line(),
      "Not everything is in the draft|Left out: /etc/passwd: it is outside the shared folder");
  EXPECT_EQ(compose({"quoll://send"}).status, 1);
  EXPECT_TRUE(line().starts_with("There is no draft|the command"));
}

TEST_F(ComposeNotice, OfManyTheFirstAreShown) {
  EXPECT_EQ(compose(Words(9, "quoll://send")).status, 1);
  for (int shown = 0; shown < 3; ++shown) {
    EXPECT_TRUE(line().starts_with("There is no draft|the command"));
  }
  EXPECT_EQ(line(), "6 more drafts were not as they should be|What was taken of them is kept.");
}

TEST_F(ComposeNotice, EveryDraftIsWrittenBeforeAClientIsWaitedFor) {
  choose("thunderbird", "The Bird", "exec sleep 5");
  const ScopedEnvironment scoped(home_.bus.environment());
  const platform::ScopedDesktop desktop({.log = std::make_shared<RecordingLog>()});
  std::vector<std::shared_ptr<foundation::NSURL>> urls;
  for (const char* subject : {"a", "b", "c"}) {
    urls.push_back(
        foundation::NSURL::URLWithString(std::string("quoll://compose?subject=") + subject));
  }
  EXPECT_TRUE(gio::start_launcher({}, 60s)->openURLs(
      urls, kName, platform::NSWorkspaceLaunchAllowingClassicStartup));
  static_cast<void>(given());
  EXPECT_EQ(home_.drafts().size(), 3U) << "the client is there as soon as the last is written";
}

TEST_F(ComposeNotice, ARecipientIsNeverAFile) {
  choose("kmail", "KMail");
  open(
      "quoll://compose?subject=S&to=a%40x.org%3Fsubject%3DI%26attach%3D%2Fetc%2Fpasswd%3B"
      "file%3A%2F%2F%2Fetc%2Fpasswd%3Bmailto%3Ab%40x.org%3Fattach%3D%2Fetc%2Fpasswd%3B"
      "Ann%20%3Cc%40x.org%3E%3B");
  bool is_recipient = false;
  for (const std::string& word : given()) {
    EXPECT_FALSE(word.starts_with("mailto:") || word.starts_with("file:") ||
                 word.starts_with("--attach"))
        << word;
    is_recipient = is_recipient || word == "Ann <c@x.org>";
  }
  EXPECT_TRUE(is_recipient);
}

TEST_F(ComposeNotice, ABusWithoutADisplayIsSaid) {
  const ReceiverHome home({{"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", std::nullopt}});
  home.bus.add_service(kName, std::string(QUOLL_COMPOSE) + " --service --idle 0.2");
  Process desktop(Words{NOTIFICATION_DOUBLE}, home.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  EXPECT_EQ(
      run({"gdbus", "call", "--session", "--dest", kName, "--object-path", "/it/vorlent/quoll2",
           "--method", "org.freedesktop.Application.Open", "['quoll://compose?subject=x']", "{}"},
          home.bus.environment())
          .status,
      0);
  const std::string reason = "no display is known here, so no mail client was started";
  EXPECT_EQ(desktop.read_line(), "The draft is kept|" + reason + ".");
  EXPECT_EQ(desktop.read_line(), home.drafts().front());
  EXPECT_TRUE(holds(home.compose({"quoll://compose?subject=x"}).output,
                    "The draft is kept: " + reason + "; quollctl doctor tells more.\n"));
}

TEST_F(ComposeNotice, ADraftThatArrivesIsSilent) {
  choose("thunderbird", "The Bird");
  open("quoll://compose?subject=first");
  EXPECT_EQ(given().size(), 1U);
  EXPECT_EQ(token_, "token=token-2");
  open("quoll://compose?attachment_0=%2Fnowhere");
  EXPECT_TRUE(holds(line(), "Left out: /nowhere: ")) << "of the second one";
}

TEST_F(ComposeNotice, ATextTooLongForACommandLineIsNeverShortened) {
  const std::string text(200000, 'x');
  choose("claws-mail", "Claws");
  open("quoll://compose?subject=x&plainBody=" + text);
  EXPECT_EQ(line(),
            "The draft is kept|it is too long for Claws, which takes 131071 "
            "bytes, so open or import the file there.");
  EXPECT_EQ(line(), only_draft());
  EXPECT_TRUE(holds(home_.read_only_draft(), text));
  choose("kmail", "KMail");
  open("quoll://compose?subject=x&plainBody=" + text);
  const Words words = given();
  ASSERT_EQ(words.size(), 3U);
  ASSERT_TRUE(words[2].starts_with("--msg=file:///")) << words[2];
  EXPECT_EQ(read_file(words[2].substr(13)), text + "\n");
}

}  // namespace
}  // namespace quoll::test
