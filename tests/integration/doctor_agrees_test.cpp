// Whatever is broken: the doctor says that a share does not arrive exactly when a share does not.
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/integration/private_bus.h"
#include "tests/support/temporary_folder.h"

namespace quoll::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kReceiver = "it.vorlent.quoll2";
constexpr std::string_view kPicture(
    "GIF89a\1\0\1\0\200\0\0\0\0\0\377\377\377,\0\0\0\0\1\0\1\0\0\2\2D\1\0;", 35);

/// A home in which everything is there that a share needs.
class Home {
 public:
  Home(const Environment& of_bus, std::chrono::milliseconds start_limit)
      : bus(of_bus, start_limit), environment(bus.environment()) {
    environment["QUOLL_IMAGE_HELPER"] = QUOLL_IMAGE_HELPER;
    receiver_is(QUOLL_COMPOSE " --service --idle 1");
    std::ofstream(bus.path("report.txt")) << "the content";
    std::ofstream(bus.path("picture"), std::ios::binary) << kPicture;
  }
  ~Home() {
    umount2(bus.path("containers").c_str(), MNT_DETACH);
    // A receiver that has not ended yet may take away what is looked at.
    std::error_code gone = std::make_error_code(std::errc::no_such_file_or_directory);
    for (int attempt = 0; gone && attempt < 10; ++attempt) {
      gone.clear();
      std::error_code ignored;
      for (fs::recursive_directory_iterator at(bus.path(""), gone), end; at != end;
           at.increment(gone)) {
        if (at->is_directory(ignored)) {
          fs::permissions(at->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
        }
      }
    }
  }
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;

  PrivateBus bus;
  Environment environment;

  [[nodiscard]] std::string container(const std::string& name) const {
    return bus.path("containers/K7Q2M9XT4B.quoll" + name);
  }
  [[nodiscard]] std::string drafts(const std::string& name) const {
    return bus.data_home() + "/quoll-compose/" + name;
  }
  void receiver_is(const std::string& command) const { bus.add_service(kReceiver, command); }
  /// The receiver's program is this script.
  void receiver_does(const std::string& script) const {
    make_program("quoll-compose", script);
    receiver_is(bus.path("quoll-compose") + " --service");
  }
  void make_program(const std::string& name, const std::string& script) const {
    std::ofstream(bus.path(name)) << "#!/bin/sh\n" << script << '\n';
    fs::permissions(bus.path(name), fs::perms::owner_all);
  }
  /// For all programs.
  void containers_are(const std::string& path) {
    environment["QUOLL_GROUP_CONTAINERS"] = path;
    receiver_does("export QUOLL_GROUP_CONTAINERS='" + path + "'; exec " QUOLL_COMPOSE " \"$@\"");
  }
  void no_bus() { environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nowhere"; }
  void entry_starts(const std::string& program) const {
    bus.add_entry(kReceiver, "[Desktop Entry]\nType=Application\nName=M\nExec=" + program +
                                 " %u\nX-Quoll-TakenPipe=true\n");
  }
  /// There, but a link to a folder elsewhere.
  void make_link(const std::string& path) const {
    fs::create_directories(bus.path("elsewhere"));
    fs::create_directories(fs::path(path).parent_path());
    fs::create_directory_symlink(bus.path("elsewhere"), path);
  }
  static void make_folder(const std::string& path, fs::perms mode) {
    fs::create_directories(path);
    fs::permissions(path, mode);
  }
  static void make_file(const std::string& path) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path) << "x";
  }

  /// Shares a text, a file, and a picture and bytes that have no file. True when all are in a
  /// draft.
  [[nodiscard]] bool share_arrives() {
    shared = run({"sh", "-c", "exec \"$@\" <\"$0\"", bus.path("picture"), QUOLL_SHARE, "--text",
                  "the words", bus.path("report.txt"), "-", "data:text/plain,bytes"},
                 environment);
    std::string draft = newest_draft();
    while (shared.status == 0 && draft.empty() && is_at_work()) {
      usleep(2000);
      draft = newest_draft();
    }
    return shared.status == 0 && draft.find("the words") != std::string::npos &&
           draft.find("report.txt") != std::string::npos &&
           draft.find("image.png") != std::string::npos &&
           draft.find("data.txt") != std::string::npos;
  }
  Ended shared;

 private:
  [[nodiscard]] std::string newest_draft() const {
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(drafts("drafts"), missing)) {
      if (entry.path().extension() == ".eml" && !entry.path().stem().string().starts_with('.')) {
        return read_file(entry.path());
      }
    }
    return "";
  }
  /// False once a receiver that the bus had started has ended.
  [[nodiscard]] bool is_at_work() const {
    const Ended owner = run(
        {"dbus-send", "--session", "--print-reply=literal", "--dest=org.freedesktop.DBus",
         "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner", "string:it.vorlent.quoll2"},
        environment);
    return owner.output.find("false") == std::string::npos;
  }
};

constexpr fs::perms kReadOnly = fs::perms::owner_read | fs::perms::owner_exec;
/// What only root can prepare is not tried by others.
enum class Needs { kNothing, kRoot };

struct Breakage {
  const char* what;
  void (*prepare)(Home& home);
  bool arrives = false;
  Needs needs = Needs::kNothing;
  Environment of_bus{};
  std::chrono::milliseconds start_limit = std::chrono::seconds(25);
};

const std::vector<Breakage>& receivers() {
  static const std::vector<Breakage> rows{
      {"nothing", [](Home&) {}, true},
      {"nobody answers",
       [](Home& home) {
         fs::remove(home.bus.path("system-data/dbus-1/services/it.vorlent.quoll2.service"));
         home.bus.add_service("it.vorlent.other", "/bin/true");
       }},
      {"the program is missing",
       [](Home& home) { home.receiver_is("/nowhere/quoll-compose --service"); }},
      {"another program is missing", [](Home& home) { home.receiver_is("/nowhere/mail"); }},
      {"it is switched off", [](Home& home) { home.receiver_is("/bin/false"); }},
      {"it ends at once", [](Home& home) { home.receiver_does("exit 1"); }},
      {"a library of it is missing", [](Home& home) { home.receiver_does("exit 127"); }},
      {"it is killed", [](Home& home) { home.receiver_does("kill -9 $$"); }},
      {.what = "it is silent",
       .prepare = [](Home& home) { home.receiver_does("exec sleep 1000"); },
       .start_limit = std::chrono::milliseconds(300)},
      {"it can take nothing",
       [](Home& home) { Home::make_folder(home.drafts("taken"), kReadOnly); }},
      {"it can write nothing",
       [](Home& home) { Home::make_folder(home.drafts("drafts"), kReadOnly); }},
      {"it can hand nothing on, and keeps it",
       [](Home& home) { Home::make_folder(home.drafts("given"), kReadOnly); }, true},
      {"its folder is a file",
       [](Home& home) { Home::make_file(home.bus.data_home() + "/quoll-compose"); }},
      {"the drafts cannot be listed",
       [](Home& home) {
         Home::make_folder(home.drafts("drafts"), fs::perms::owner_write | fs::perms::owner_exec);
       }},
      {"its folder is read-only",
       [](Home& home) { Home::make_folder(home.drafts(""), kReadOnly); }},
      {.what = "it has no home",
       .prepare = [](Home&) {},
       .of_bus = {{"HOME", std::nullopt}, {"XDG_DATA_HOME", std::nullopt}}},
      {"it looks for the files elsewhere",
       [](Home& home) {
         home.environment["QUOLL_GROUP_CONTAINERS"] = home.bus.path("containers-2");
       }},
      {"there is no bus", [](Home& home) { home.no_bus(); }},
      {"there is no bus, but an entry",
       [](Home& home) {
         home.no_bus();
         home.entry_starts(QUOLL_COMPOSE);
       },
       true},
      {"no bus, and the entry's program is missing",
       [](Home& home) {
         home.no_bus();
         home.entry_starts("/nowhere/quoll-compose");
       }},
      {"no bus, and the entry's program fails",
       [](Home& home) {
         home.no_bus();
         home.make_program("quoll-compose", "exit 1");
         home.entry_starts(home.bus.path("quoll-compose"));
       }},
      {"no bus, and the entry's program can keep nothing",
       [](Home& home) {
         home.no_bus();
         home.entry_starts(QUOLL_COMPOSE);
         Home::make_file(home.drafts("taken"));
       }},
  };
  return rows;
}

const std::vector<Breakage>& containers() {
  static const std::vector<Breakage> rows{
      {"it is a file", [](Home& home) { Home::make_file(home.container("")); }},
      {"its name is not UTF-8",
       [](Home& home) { home.containers_are(home.bus.path("containers/\xff")); }},
      {"it has no absolute path", [](Home& home) { home.containers_are("relative"); }},
      {"it cannot be made",
       [](Home& home) { Home::make_folder(home.bus.path("containers"), kReadOnly); }},
      {"it is read-only", [](Home& home) { Home::make_folder(home.container(""), kReadOnly); }},
      {"the shared data is read-only",
       [](Home& home) { Home::make_folder(home.container("/SharedData"), kReadOnly); }},
      {"the shared data is a file",
       [](Home& home) { Home::make_file(home.container("/SharedData")); }},
      {"the shared data is a link",
       [](Home& home) { home.make_link(home.container("/SharedData")); }},
      {"a link in the place of the staging folder is replaced",
       [](Home& home) { home.make_link(home.container("/SharedData/Share")); }, true},
      {.what = "the shared data is another user's",
       .prepare =
           [](Home& home) {
             Home::make_folder(home.container("/SharedData"), fs::perms::owner_all);
             EXPECT_EQ(chown(home.container("/SharedData").c_str(), 65534, 65534), 0);
           },
       .needs = Needs::kRoot},
      {"an empty read-only staging folder is replaced",
       [](Home& home) { Home::make_folder(home.container("/SharedData/Share"), kReadOnly); }, true},
      {"a read-only staging folder with files is replaced",
       [](Home& home) {
         Home::make_file(home.container("/SharedData/Share/old"));
         Home::make_folder(home.container("/SharedData/Share"), kReadOnly);
       },
       true},
      {"a staging folder that cannot be read",
       [](Home& home) {
         Home::make_file(home.container("/SharedData/Share/old"));
         Home::make_folder(home.container("/SharedData/Share"), fs::perms::none);
       }},
      {.what = "files in the staging folder are another user's",
       .prepare =
           [](Home& home) {
             Home::make_file(home.container("/SharedData/Share/old"));
             EXPECT_EQ(chown(home.container("/SharedData/Share").c_str(), 65534, 65534), 0);
           },
       .needs = Needs::kRoot},
      {"a file in the place of the staging folder is replaced",
       [](Home& home) { Home::make_file(home.container("/SharedData/Share")); }, true},
      {"the locks are a file", [](Home& home) { Home::make_file(home.container("/.locks")); }},
      {"the locks are a link", [](Home& home) { home.make_link(home.container("/.locks")); }},
      {"no lock can be made",
       [](Home& home) { Home::make_folder(home.container("/.locks"), kReadOnly); }},
      {"a lock cannot be opened",
       [](Home& home) {
         Home::make_file(home.container("/.locks/%2FSharedData%2FShare.lock"));
         fs::permissions(home.container("/.locks/%2FSharedData%2FShare.lock"), fs::perms::none);
       }},
      {"nothing unfinished can be kept",
       [](Home& home) { Home::make_folder(home.container("/.incoming"), kReadOnly); }},
      {"a link in the place of what is unfinished",
       [](Home& home) { home.make_link(home.container("/.incoming")); }},
      {"a file in the place of what is unfinished",
       [](Home& home) { Home::make_file(home.container("/.incoming")); }},
      {.what = "there is no room",
       .prepare =
           [](Home& home) {
             ASSERT_EQ(mount("tmpfs", home.bus.path("containers").c_str(), "tmpfs", 0, "size=64k"),
                       0);
             std::ofstream(home.bus.path("containers/full")) << std::string(1 << 20, 'x');
           },
       .needs = Needs::kRoot},
      {"the helper for pictures is missing",
       [](Home& home) { home.environment["QUOLL_IMAGE_HELPER"] = "/nowhere/helper"; }},
      {"the helper for pictures does nothing",
       [](Home& home) { home.environment["QUOLL_IMAGE_HELPER"] = "/bin/false"; }},
      {"nobody needs a folder for temporary files",
       [](Home& home) { home.environment["TMPDIR"] = "/nowhere"; }, true},
      {"an edition of the mail application that is not there",
       [](Home& home) {
         home.environment["QUOLL_BUNDLE_IDENTIFIER"] = "it.vorlent.quoll.beta8.Quoll-Share";
       }},
  };
  return rows;
}

/// What the doctor says of the shared folder; empty when it says nothing bad.
std::string said_of_folder(const std::string& told) {
  const std::size_t begin = told.find("the shared folder cannot be used: ");
  return begin == std::string::npos ? "" : told.substr(begin, told.find('\n', begin) - begin);
}

/// Modes of files bind root too, in the programs that this one starts from now on.
bool modes_bind_all() {
  constexpr std::array kRights{CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER};
  return geteuid() != 0 ||
         std::ranges::all_of(kRights, [](int right) { return prctl(PR_CAPBSET_DROP, right) == 0; });
}

void expect_agreement(const std::vector<Breakage>& rows) {
  ASSERT_TRUE(modes_bind_all());
  for (const Breakage& row : rows) {
    SCOPED_TRACE(row.what);
    if (row.needs == Needs::kRoot && geteuid() != 0) {
      continue;
    }
    Home home(row.of_bus, row.start_limit);
    row.prepare(home);
    if (row.of_bus.contains("HOME")) {
      home.environment["HOME"] = home.bus.path("home");
    }
    const Ended doctor = run({QUOLLCTL, "doctor"}, home.environment);
    EXPECT_EQ(home.share_arrives(), row.arrives)
        << home.shared.status << ' ' << home.shared.errors << doctor.output;
    EXPECT_EQ(doctor.status, row.arrives ? 0 : 1)
        << home.shared.errors << doctor.output << doctor.errors;
    EXPECT_NE(home.shared.errors.find(said_of_folder(doctor.output)), std::string::npos)
        << home.shared.errors << doctor.output;
    EXPECT_EQ(doctor.output.find("BROKEN ") == std::string::npos, row.arrives) << doctor.output;
  }
}

TEST(DoctorAgrees, OnTheReceiver) {
  expect_agreement(receivers());
}

TEST(DoctorAgrees, OnTheContainerAndTheRest) {
  expect_agreement(containers());
}

}  // namespace
}  // namespace quoll::test
