// What a person is told of a draft that came by the bus, where nobody sees a terminal.
#include <thread>

#include "linux/gio/launcher.h"
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
    constexpr unsigned kForeground = 131072;
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

TEST_F(ComposeNotice, ADraftThatIsKeptIsSaidWithItsPlace) {
  open("quoll://compose?subject=x");
  EXPECT_EQ(line(),
            "The draft is kept|The draft is kept: no mail client is chosen for mail links.");
  EXPECT_EQ(line(), only_draft());
}

TEST_F(ComposeNotice, AClientThatFailsAtOnceIsSaid) {
  choose("claws-mail", "Claws", "exit 1");
  open("quoll://compose?subject=x");
  EXPECT_EQ(line(), "The draft is kept|The draft is kept: Claws ended at once, with status 1.");
  EXPECT_EQ(line(), only_draft());
}

TEST_F(ComposeNotice, AChosenClientThatIsGoneIsSaid) {
  choose("thunderbird", "The Bird");
  EXPECT_EQ(compose({"--client", "thunderbird"}).status, 0);
  std::filesystem::remove(home_.bus.data_home() + "/applications/thunderbird.desktop");
  choose("claws-mail", "Claws");
  open("quoll://compose?subject=x");
  EXPECT_EQ(line(),
            "A draft was made|The chosen mail client thunderbird.desktop is not there any more; "
            "quoll-compose --clients lists those that are.");
}

TEST_F(ComposeNotice, ADraftThatServersRefuseIsSaid) {
  choose("thunderbird", "The Bird");
  open(ReceiverHome::url({home_.stage("big", std::string(19'000'000, 'x'))}));
  EXPECT_EQ(
      line(),
      "A draft was made|The draft has 26.0 MB, and many mail servers refuse more than 25 MB.");
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
            "The draft is kept|The draft is kept: it is too long for Claws, which takes 131071 "
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
