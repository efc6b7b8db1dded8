// Programs that share over the session bus.
#include <fcntl.h>
#include <gio/gio.h>
#include <gio/gunixfdlist.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <list>
#include <thread>

#include "apps/sandbox/sanitizer_build.h"
#include "quoll/linux/gio/handles.h"
#include "quoll/linux/posix/unique_fd.h"
#include "tests/integration/mixed_files.h"
#include "tests/integration/receiver_home.h"
#include "tests/integration/share_home.h"

namespace quoll::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kName = "it.vorlent.quoll2.Quoll-Share";
constexpr const char* kPath = "/it/vorlent/quoll2/Quoll_Share";
constexpr const char* kReceiver = "it.vorlent.quoll2";

/// A request that is put together part by part.
class Request {
 public:
  Request& text(const char* key, const std::string& value) {
    return add(key, g_variant_new_string(value.c_str()));
  }
  Request& texts(const char* key, const std::vector<std::string>& all) {
    g_auto(GVariantBuilder) list = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE("as"));
    for (const auto& one : all) {
      g_variant_builder_add(&list, "s", one.c_str());
    }
    return add(key, g_variant_builder_end(&list));
  }
  Request& uris(const std::vector<std::string>& all) { return texts("uris", all); }
  Request& bytes(const std::string& name, const std::string& type, std::string_view content) {
    return item(name, type, "bytes",
                g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, content.data(), content.size(), 1));
  }
  /// Takes the descriptor.
  Request& descriptor(const std::string& name, int number) {
    const posix::UniqueFd owner(number);
    EXPECT_GE(number, 0) << name;
    return item(name, "", "descriptor",
                g_variant_new_handle(g_unix_fd_list_append(descriptors_.get(), number, nullptr)));
  }
  Request& item(const std::string& name, const std::string& type, const char* key,
                GVariant* value) {
    g_auto(GVariantBuilder) item = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE_VARDICT);
    if (!name.empty()) {
      g_variant_builder_add(&item, "{sv}", "name", g_variant_new_string(name.c_str()));
    }
    if (!type.empty()) {
      g_variant_builder_add(&item, "{sv}", "type", g_variant_new_string(type.c_str()));
    }
    g_variant_builder_add(&item, "{sv}", key, value);
    items_.push_back(g_variant_ref_sink(g_variant_builder_end(&item)));
    return *this;
  }
  Request& add(const char* key, GVariant* value) {
    entries_.emplace_back(key, gio::VariantHandle(g_variant_ref_sink(value)));
    return *this;
  }
  /// What comes after it stands under another key of the same name.
  Request& end_of_items() {
    GVariant* const list =
        g_variant_new_array(G_VARIANT_TYPE_VARDICT, items_.data(), items_.size());
    for (GVariant* item : items_) {
      g_variant_unref(item);
    }
    items_.clear();
    return add("items", list);
  }
  /// The parameters of the call; floating.
  [[nodiscard]] GVariant* parameters() {
    if (!items_.empty()) {
      end_of_items();
    }
    g_auto(GVariantBuilder) all = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE("a{sv}"));
    for (const auto& [key, value] : entries_) {
      g_variant_builder_add(&all, "{sv}", key.c_str(), value.get());
    }
    return g_variant_new("(@a{sv})", g_variant_builder_end(&all));
  }
  [[nodiscard]] GUnixFDList* descriptors() const { return descriptors_.get(); }

 private:
  std::vector<std::pair<std::string, gio::VariantHandle>> entries_;
  std::vector<GVariant*> items_;
  gio::ObjectHandle<GUnixFDList> descriptors_{g_unix_fd_list_new()};
};

struct Answer {
  int code = -1;
  std::string told;  ///< or the error
};

/// A call that was made; its answer comes later.
class Call {
 public:
  Call(GDBusConnection* bus, Request& request) {
    g_dbus_connection_call_with_unix_fd_list(bus, kName, kPath, "it.vorlent.quoll2.Share1", "Share",
                                             request.parameters(), G_VARIANT_TYPE("(us)"),
                                             G_DBUS_CALL_FLAGS_NONE, G_MAXINT,
                                             request.descriptors(), nullptr, answered, this);
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  ~Call() { wait(); }

  const Answer& wait() {
    while (!is_over_) {
      g_main_context_iteration(nullptr, TRUE);
    }
    return answer_;
  }

 private:
  static void answered(GObject* bus, GAsyncResult* result, gpointer data) {
    auto& self = *static_cast<Call*>(data);
    gio::ErrorSlot error;
    const gio::VariantHandle reply(g_dbus_connection_call_with_unix_fd_list_finish(
        G_DBUS_CONNECTION(bus), nullptr, result, error.out()));
    if (reply) {
      guint32 code = 0;
      const char* told = nullptr;
      g_variant_get(reply.get(), "(u&s)", &code, &told);
      self.answer_ = {static_cast<int>(code), told};
    } else {
      g_dbus_error_strip_remote_error(error.get());
      self.answer_ = {-1, error.message()};
    }
    self.is_over_ = true;
  }

  Answer answer_;
  bool is_over_ = false;
};

class ShareService : public testing::Test {
 protected:
  /// What the service writes on standard error goes to the file `journal` of its home, or to that
  /// of the test when none is named.
  explicit ShareService(const std::string& idle = "0.2", const std::string& journal = "") {
    const std::string command = std::string(QUOLL_SHARE_SERVICE) + " --idle " + idle;
    home_.bus.add_service(kName, journal.empty() ? command
                                                 : "/bin/sh -c 'exec " + command + " 2>" +
                                                       home_.bus.path(journal) + "'");
  }
  void install_receiver() const {
    home_.bus.add_service(kReceiver, std::string(QUOLL_COMPOSE) + " --service");
  }
  GDBusConnection* bus() {
    if (!bus_) {
      const auto flags =
          static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
      bus_.reset(g_dbus_connection_new_for_address_sync(
          home_.bus.environment().at("DBUS_SESSION_BUS_ADDRESS")->c_str(), flags, nullptr, nullptr,
          nullptr));
    }
    return bus_.get();
  }
  Answer share(Request& request) { return Call(bus(), request).wait(); }
  /// The error of a call to the application; empty when it was answered.
  std::string open(const std::vector<std::string>& uris, const char* token = "") {
    g_auto(GVariantBuilder) list = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE("as"));
    for (const auto& uri : uris) {
      g_variant_builder_add(&list, "s", uri.c_str());
    }
    g_auto(GVariantBuilder) data = G_VARIANT_BUILDER_INIT(G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&data, "{sv}", "activation-token", g_variant_new_string(token));
    gio::ErrorSlot error;
    const gio::VariantHandle reply(
        g_dbus_connection_call_sync(bus(), kName, kPath, "org.freedesktop.Application", "Open",
                                    g_variant_new("(asa{sv})", &list, &data), nullptr,
                                    G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, error.out()));
    if (error) {
      g_dbus_error_strip_remote_error(error.get());
    }
    return error.message();
  }
  /// Waits for so many drafts and answers what an independent reader finds in them.
  std::string drafts(std::size_t count) const {
    while (home_.drafts().size() < count) {
      std::this_thread::sleep_for(10ms);
    }
    home_.wait_for_drafts();
    std::string all;
    for (const auto& draft : home_.drafts()) {
      all += ReceiverHome::read_message(draft);
    }
    EXPECT_EQ(home_.drafts().size(), count);
    return all;
  }
  bool is_nothing_prepared() const {
    std::error_code missing;
    const std::string incoming = home_.bus.path("containers/K7Q2M9XT4B.quoll/.incoming");
    return !std::filesystem::exists(incoming, missing) || std::filesystem::is_empty(incoming);
  }
  /// As long as it is held, every share waits.
  [[nodiscard]] posix::UniqueFd held_staging_lock() const {
    const std::string locks = home_.bus.path("containers/K7Q2M9XT4B.quoll/.locks");
    std::filesystem::create_directories(locks);
    posix::UniqueFd lock(open_file(locks + "/turn", O_RDWR | O_CREAT));
    EXPECT_EQ(flock(lock.get(), LOCK_EX), 0);
    return lock;
  }
  /// The process of the service, which the bus has started.
  pid_t service() {
    gio::ErrorSlot error;
    const gio::VariantHandle reply(g_dbus_connection_call_sync(
        bus(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "GetConnectionUnixProcessID", g_variant_new("(s)", kName), G_VARIANT_TYPE("(u)"),
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, error.out()));
    guint32 id = 0;
    if (reply) {
      g_variant_get(reply.get(), "(u)", &id);
    }
    EXPECT_NE(id, 0U) << error.message();
    return static_cast<pid_t>(id);
  }
  /// The processes that a process has started.
  static std::vector<pid_t> children_of(pid_t process) {
    const std::string id = std::to_string(process);
    std::ifstream children("/proc/" + id + "/task/" + id + "/children");
    return {std::istream_iterator<pid_t>(children), std::istream_iterator<pid_t>()};
  }
  /// True when a process has a file open whose path ends so.
  static bool has_open(pid_t process, const std::string& end) {
    std::error_code gone;
    const std::filesystem::directory_iterator files("/proc/" + std::to_string(process) + "/fd",
                                                    gone);
    return std::any_of(begin(files), std::filesystem::directory_iterator(), [&](const auto& file) {
      return std::filesystem::read_symlink(file, gone).string().ends_with(end);
    });
  }
  static int open_file(const std::string& path, int flags) {
    return ::open(path.c_str(), flags | O_CLOEXEC, 0600);
  }
  std::string write(const std::string& name, const std::string& content) const {
    std::ofstream(home_.bus.path(name)) << content;
    return home_.bus.path(name);
  }

  ReceiverHome home_;
  gio::ObjectHandle<GDBusConnection> bus_;
};

TEST_F(ShareService, FilesAreOpened) {
  install_receiver();
  const std::string file = write("a b,c.txt", "the content");
  EXPECT_EQ(open({"file://" + home_.bus.path("a%20b,c.txt"), "https://example.org/"}), "");
  const std::string draft = drafts(1);
  EXPECT_NE(draft.find("a b,c.txt"), std::string::npos) << draft;
  EXPECT_NE(draft.find("https://example.org/"), std::string::npos) << draft;
}

TEST_F(ShareService, FilesArriveInTheOrderInWhichTheyWerePicked) {
  const std::string record = home_.bus.path("record");
  home_.bus.add_service(kReceiver,
                        std::string(RECEIVER_DOUBLE) + " bus " + kReceiver + " record " + record);
  const auto picked = write_mixed_files(home_.bus.path(""));
  for (int time = 0; time < order_trials(); ++time) {
    Request request;
    ASSERT_EQ(share(request.uris(picked)).code, 0);
    ASSERT_EQ(recorded_names(record), names_of(picked)) << "time " << time;
  }
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
            "not opened: nothing that was given can be shared; give something that can be read\n");
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

TEST_F(ShareService, AShareIsOneProcessAndItsLauncher) {
  posix::UniqueFd lock = held_staging_lock();
  EXPECT_EQ(open({"https://example.org/", "data:,a%20file"}), "");
  Request request;
  Call call(bus(), request.text("text", "words").bytes("a.txt", "", "the content"));
  std::vector<pid_t> shares;
  while ((shares = children_of(service())).size() < 2) {
    std::this_thread::sleep_for(10ms);
  }
  for (const pid_t share : shares) {
    while (!has_open(share, "/.locks/turn")) {
      ASSERT_FALSE(has_ended(share));
      std::this_thread::sleep_for(1ms);
    }
    const std::vector<pid_t> launcher = children_of(share);
    ASSERT_EQ(launcher.size(), 1U);
    EXPECT_TRUE(children_of(launcher[0]).empty());
  }
  EXPECT_EQ(children_of(service()), shares);
  lock.reset();
  EXPECT_EQ(call.wait().code, 1) << "there is no receiver";
}

TEST_F(ShareService, OpenHasItsLimits) {
  EXPECT_EQ(open({}), "there is nothing to share");
  EXPECT_EQ(open(std::vector<std::string>(20'001, "a:b")),
            "20001 links and files, and 20000 are the most");
}

// As arguments they would be longer than a command line may be.
TEST_F(ShareService, ThousandsOfNamesAndALongAnswer) {
  install_receiver();
  const std::string name = "/nowhere/" + std::string(600, 'n');
  Request request;
  const Answer answer =
      share(request.text("text", "words").uris(std::vector<std::string>(5000, name)));
  EXPECT_EQ(answer.code, 3);
  EXPECT_LE(answer.told.size(), std::size_t{65536} + 4);
  EXPECT_TRUE(answer.told.ends_with("n: no such file\n...")) << answer.told;
}

TEST_F(ShareService, EverythingThatAProgramMayGive) {
  install_receiver();
  const std::string file = write("by uri.txt", "by uri");
  const std::string another = write("another", "by descriptor");
  Request request;
  request.text("title", "A title")
      .text("html", "some <b>bold</b> words")
      .uris({file, "https://example.org/"})
      .bytes("../na\xC3\xAFve, 1.pdf", "Application/PDF; x=y", "by bytes")
      .descriptor("of a descriptor.txt", open_file(another, O_RDONLY));
  const Answer answer = share(request);
  EXPECT_EQ(answer.told, "");
  EXPECT_EQ(answer.code, 0);
  const std::string draft = drafts(1);
  for (const char* part : {"A title", "bold", "https://example.org/", "by uri.txt",
                           "na\\u00efve, 1.pdf", "of a descriptor.txt"}) {
    EXPECT_NE(draft.find(part), std::string::npos) << part << '\n' << draft;
  }
}

TEST_F(ShareService, WhatWasSaidOfTheDraftIsInIt) {
  install_receiver();
  Request request;
  const Answer answer = share(request.texts("to", {"a@example.org", "-"})
                                  .texts("cc", {"C D <c@example.org>"})
                                  .text("subject", "-")
                                  .bytes("a.txt", "", "x"));
  EXPECT_EQ(answer.code, 0) << answer.told;
  const std::string draft = drafts(1);
  for (const char* const part :
       {"header To \"a@example.org", "header Cc \"C D <c@example.org>\"", "header Subject \"-\""}) {
    EXPECT_NE(draft.find(part), std::string::npos) << part << '\n' << draft;
  }
}

TEST_F(ShareService, AThousandRecipients) {
  const std::string record = home_.bus.path("record");
  home_.bus.add_service(kReceiver,
                        std::string(RECEIVER_DOUBLE) + " bus " + kReceiver + " record " + record);
  Request request;
  const std::vector<std::string> all(1000, "a@x");
  EXPECT_EQ(share(request.texts("to", all).texts("cc", all).text("text", "words")).code, 0);
  const auto message = message_of(read_file(record).substr(std::string("uri ").size()));
  const std::string recipients = foundation::Value(message->toString()).description();
  EXPECT_EQ(recipients.size(), 4000U);
  EXPECT_EQ(message->ccString(), foundation::Value(recipients));
}

TEST_F(ShareService, WhatCannotBeSharedIsToldAndKeepsNothingBack) {
  install_receiver();
  Request request;
  request.text("text", "words")
      .uris({"/nowhere"})
      .descriptor("folder", open_file("/", O_RDONLY))
      .descriptor("no-rights", open_file("/etc", O_PATH))
      .descriptor("to-write", open_file("/dev/null", O_WRONLY))
      .descriptor("empty", open_file("/dev/null", O_RDONLY))
      .bytes("", "", "");
  const Answer answer = share(request);
  EXPECT_EQ(answer.code, 3);
  EXPECT_EQ(answer.told,
            "left out: /nowhere: no such file\n"
            "left out: folder: is a directory\n"
            "left out: no-rights: bad file descriptor\n"
            "left out: to-write: bad file descriptor\n"
            "left out: empty: it is empty\n"
            "left out: an item without a name: it is empty");
  EXPECT_NE(drafts(1).find("words"), std::string::npos);
}

TEST_F(ShareService, NobodyToReceive) {
  Request request;
  const Answer answer = share(request.text("text", "words"));
  EXPECT_EQ(answer.code, 1);
  EXPECT_EQ(answer.told,
            "not opened: no mail application answers; install the mail application or "
            "quoll-compose");
}

TEST_F(ShareService, RequestsThatAreNone) {
  std::list<std::pair<Request, std::string>> rows;
  const auto row = [&](const std::string& error) -> Request& {
    rows.emplace_back(Request(), error);
    return rows.back().first;
  };
  row("there is nothing to share");
  row("there is nothing to share").text("title", "alone");
  row("there is nothing to share").text("text", "").text("html", "");
  row("there is nothing to share").text("subject", "alone").texts("to", {"a@x"});
  row("\"bcc\" is not known").texts("bcc", {"a@x"});
  row("\"to\" is not of the type as").text("to", "a@x");
  row("the recipient \"a@x;b@x\": it has a semicolon; give each address by itself")
      .texts("cc", {"a@x;b@x"});
  row("the recipient \"a\\nb\": it has a line break or a control character")
      .texts("to", {"c@x", "a\nb"});
  row("1001 recipients in \"to\", and 1000 are the most")
      .texts("to", std::vector<std::string>(1001, "a@x"));
  row("\"text\" is not of the type s").add("text", g_variant_new_int32(1));
  row("\"uris\" is not of the type as").text("uris", "https://h/");
  row("\"items\" is not of the type aa{sv}").text("items", "x");
  row("\"bytes\" is not of the type ay").item("n", "", "bytes", g_variant_new_string("x"));
  row("\"descriptor\" is not of the type h").item("n", "", "descriptor", g_variant_new_int32(0));
  row("a descriptor is not there").item("n", "", "descriptor", g_variant_new_handle(0));
  row("a descriptor is not there").item("n", "", "descriptor", g_variant_new_handle(-1));
  row("a descriptor is not there").item("n", "", "descriptor", g_variant_new_handle(G_MAXINT32));
  row("an item has neither \"bytes\" nor \"descriptor\"")
      .item("n", "", "type", g_variant_new_string("a/b"));
  row("\"path\" is not known of items").item("", "", "path", g_variant_new_string("/etc/passwd"));
  row("a name or a type is longer than 255 bytes").bytes(std::string(256, 'n'), "", "x");
  row("\"a:b\" is no media type").bytes("n", "a:b", "x");
  row("20001 links and files, and 20000 are the most")
      .uris(std::vector<std::string>(20'001, "a:b"));
  row("20001 links and files, and 20000 are the most")
      .uris(std::vector<std::string>(20'000, "a:b"))
      .uris({"a:b"});
  Request& twice = row("66 items, and 64 are the most");
  for (int number = 0; number < 66; ++number) {
    twice.bytes("n", "", "x");
    if (number == 32) {
      twice.end_of_items();
    }
  }
  Request& many = row("65 items, and 64 are the most");
  for (int number = 0; number < 65; ++number) {
    many.bytes("n", "", "x");
  }
  for (auto& [request, error] : rows) {
    const Answer answer = share(request);
    EXPECT_EQ(answer.code, -1) << error;
    EXPECT_EQ(answer.told, error);
  }
}

TEST_F(ShareService, ASlowDescriptorDoesNotStopTheNextCall) {
  install_receiver();
  int ends[2] = {-1, -1};
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  posix::UniqueFd writing(ends[1]);
  Request slow;
  Call first(bus(), slow.descriptor("slow.txt", ends[0]));
  Request quick;
  const Answer second = share(quick.text("text", "quick"));
  EXPECT_EQ(second.code, 0) << second.told;
  ASSERT_EQ(::write(writing.get(), "slow", 4), 4);
  writing.reset();
  EXPECT_EQ(first.wait().code, 0) << "it was not given up";
}

TEST_F(ShareService, SixteenSharesAreUnderWayAtMost) {
  posix::UniqueFd lock = held_staging_lock();
  std::list<Call> calls;
  std::list<Request> requests;
  for (int number = 0; number < 16; ++number) {
    calls.emplace_back(bus(), requests.emplace_back().text("text", std::to_string(number)));
  }
  Request request;
  Call beyond(bus(), request.text("text", "words"));
  EXPECT_EQ(open({"https://example.org/"}), "too many shares are under way");
  lock.reset();
  EXPECT_EQ(beyond.wait().told, "too many shares are under way");
  for (Call& call : calls) {
    EXPECT_EQ(call.wait().code, 1) << "there is no receiver";
  }
}

TEST_F(ShareService, AnEmptyTextIsNone) {
  install_receiver();
  Request request;
  const Answer answer = share(request.text("title", "").text("html", "").text("text", "words"));
  EXPECT_EQ(answer.code, 0) << answer.told;
  EXPECT_EQ(answer.told, "");
}

TEST_F(ShareService, ACallerThatGoesAwayEndsItsShareAndNoOther) {
  install_receiver();
  posix::UniqueFd lock = held_staging_lock();
  Request request;
  g_dbus_connection_call(bus(), kName, kPath, "it.vorlent.quoll2.Share1", "Share",
                         request.uris({write("a.txt", "the words")}).parameters(), nullptr,
                         G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, nullptr, nullptr);
  EXPECT_EQ(open({"https://example.org/"}), "") << "the call before it has begun";
  const pid_t id = service();
  EXPECT_TRUE(g_dbus_connection_close_sync(bus(), nullptr, nullptr));
  while (children_of(id).size() > 1) {
    std::this_thread::sleep_for(10ms);
  }
  lock.reset();
  const std::string draft = drafts(1);
  EXPECT_NE(draft.find("https://example.org/"), std::string::npos) << draft;
  EXPECT_TRUE(is_nothing_prepared());
}

TEST_F(ShareService, APersonCanCancelAShareThatTakesLong) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE, "press"}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  posix::UniqueFd lock = held_staging_lock();
  EXPECT_EQ(open({"file://" + write("a.txt", "the words")}), "");
  EXPECT_EQ(desktop.read_line(),
            "What you share is being prepared|It takes a while; the draft opens by itself.");
  EXPECT_EQ(desktop.read_line(), "[Cancel]");
  const pid_t id = service();
  while (!children_of(id).empty()) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_TRUE(is_nothing_prepared());
  lock.reset();
  EXPECT_EQ(open({"/nowhere"}), "");
  EXPECT_EQ(desktop.read_line(), "Nothing was shared|Left out: /nowhere: no such file")
      << "nothing was shown of the one that was cancelled";
  EXPECT_TRUE(home_.drafts().empty());
}

TEST_F(ShareService, TheNotificationGoesWhenTheTurnComes) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE, "later:" + home_.bus.path("pressed")},
                  home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  posix::UniqueFd lock = held_staging_lock();
  EXPECT_EQ(open({"https://example.org/"}), "");
  EXPECT_TRUE(desktop.read_line().starts_with("What you share is being prepared|"));
  EXPECT_EQ(desktop.read_line(), "[Cancel]");
  lock.reset();
  EXPECT_EQ(desktop.read_line(), "closed 1");
  drafts(1);
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

class HurriedShareService : public ShareService {
 protected:
  HurriedShareService() : ShareService("0.2 --time 1") {}
};

TEST_F(HurriedShareService, AShareThatTakesTooLongIsEndedAndSaid) {
  install_receiver();
  Process desktop({NOTIFICATION_DOUBLE}, home_.bus.environment());
  ASSERT_EQ(desktop.read_line(), "ready");
  posix::UniqueFd lock = held_staging_lock();
  Request request;
  const Answer answer = share(request.text("text", "asked by a program"));
  EXPECT_EQ(answer.code, 1);
  EXPECT_EQ(answer.told, "not opened: nothing moved on for 1 s; share less at once");
  EXPECT_EQ(open({"https://example.org/asked-by-a-person"}), "");
  EXPECT_EQ(desktop.read_line(), "Nothing was shared|Nothing moved on for 1 s; share less at once");
  lock.reset();
  EXPECT_EQ(run({QUOLL_SHARE, "--text", "words"}, home_.bus.environment()).status, 0);
  const std::string draft = drafts(1);
  EXPECT_EQ(draft.find("asked"), std::string::npos) << draft;
}

TEST_F(HurriedShareService, AShareThatMovesOnMayTakeAsLongAsItNeeds) {
  if (sandbox::kSanitizerBuild) {
    GTEST_SKIP() << "a sanitizer has to be loaded first";
  }
  home_.bus.add_service(kName, "/usr/bin/env LD_PRELOAD=" QUOLL_SLOW_COPY " QUOLL_SLOW_PIECE=50 " +
                                   std::string(QUOLL_SHARE_SERVICE) + " --idle 0.2 --time 1");
  install_receiver();
  std::vector<std::string> files;
  for (int number = 0; number < 50; ++number) {
    files.push_back(write(std::to_string(number), "x"));
  }
  Request request;
  const auto begin = std::chrono::steady_clock::now();
  const Answer answer = share(request.uris(files));
  EXPECT_EQ(answer.code, 0) << answer.told;
  EXPECT_GT(std::chrono::steady_clock::now() - begin, 2s);
}

/// Sets how many descriptors this process and those that it starts may have.
class FewDescriptors {
 protected:
  FewDescriptors() {
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &before_), 0);
    const rlimit few{200, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  }
  ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

class ShareServiceWithFewDescriptors : FewDescriptors, public ShareService {};

// One that calls select() with more of them than it expects would break.
TEST_F(ShareServiceWithFewDescriptors, TheMailApplicationIsGivenAsManyAsItWouldBe) {
  const std::string record = home_.bus.path("record");
  home_.bus.add_entry(
      kReceiver, "[Desktop Entry]\nType=Application\nName=Recorder\nExec=sh -c \"ulimit -Sn >" +
                     record + ".new; mv " + record + ".new " + record + "\" %u\n");
  Request request;
  const Answer answer = share(request.text("text", "words"));
  EXPECT_EQ(answer.code, 0) << answer.told;
  while (!std::filesystem::exists(record)) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_EQ(read_file(record), "200\n");
}

class ShortLivedShareService : public ShareService {
 protected:
  ShortLivedShareService() : ShareService("0.001") {}
};

TEST_F(ShortLivedShareService, NothingIsLostWhileTheServiceEnds) {
  install_receiver();
  for (int number = 0; number < 10; ++number) {
    Request request;
    const Answer answer = share(request.text("text", std::to_string(number)));
    EXPECT_EQ(answer.code, 0) << answer.told;
    std::this_thread::sleep_for(std::chrono::microseconds(number * 300));
  }
}

}  // namespace
}  // namespace quoll::test
