// Gives any text to the receiver as a command URL; the byte 1 stands for the path of the staging
// folder. Either the command is refused with a sentence, or its draft has exactly the attachments
// that are regular files inside the folder and are reached without a link. Each other attachment is
// left out with a reason.

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>

#include "apps/compose/cannot_compose.h"
#include "apps/compose/compose_command.h"
#include "apps/compose/draft_summary.h"
#include "apps/compose/mime_handles.h"
#include "apps/compose/places.h"
#include "apps/compose/received_draft.h"
#include "fuzz/require.h"
#include "quoll/linux/posix/files.h"
#include "quoll/platform/desktop.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace quoll;
using fuzz::require;
namespace fs = std::filesystem;

/// A home folder with a staging folder that holds files, links to outside, a folder and a pipe.
class Home {
 public:
  Home() {
    setenv("QUOLL_GROUP_CONTAINERS", folder_.path("groups").c_str(), 1);
    setenv("XDG_DATA_HOME", folder_.path("data").c_str(), 1);
    platform::install({.files = posix::make_file_manager()});
    fs::create_directories(staging() + "/folder");
    folder_.write("secret", "secret");
    for (const char* const name : {"a.txt", "b c", "folder/inner"}) {
      folder_.write("groups/K7Q2M9XT4B.quoll/SharedData/Share/" + std::string(name), name);
      allowed_.insert(inode(staging() + "/" + name));
    }
    fs::create_symlink(folder_.path("secret"), staging() + "/link");
    fs::create_symlink("..", staging() + "/up");
    fs::create_symlink("a.txt", staging() + "/inside");
    require(mkfifo((staging() + "/pipe").c_str(), 0600) == 0);
    g_mime_init();
  }

  [[nodiscard]] std::string staging() const {
    return folder_.path("groups/K7Q2M9XT4B.quoll/SharedData/Share");
  }
  [[nodiscard]] bool allows(const std::string& path) const {
    return allowed_.contains(inode(path));
  }

 private:
  static ino_t inode(const std::string& path) {
    struct stat status {};
    require(lstat(path.c_str(), &status) == 0);
    return status.st_ino;
  }

  test::TemporaryFolder folder_;
  std::set<ino_t> allowed_;
};

Home& home() {
  static Home made;
  return made;
}

std::string url_of(std::string_view text) {
  std::string url;
  for (const char c : text) {
    url += c == '\1' ? home().staging() : std::string(1, c);
  }
  return url;
}

/// True when no part of the path below the staging folder is a link.
bool is_without_links(const std::string& path) {
  for (std::size_t at = home().staging().size(); at < path.size();) {
    at = std::min(path.find('/', at + 1), path.size());
    struct stat status {};
    if (lstat(path.substr(0, at).c_str(), &status) != 0 || S_ISLNK(status.st_mode)) {
      return false;
    }
  }
  return true;
}

void check_taken(const compose::ComposeCommand& command) {
  const compose::TakenFiles taken(command.attachments);
  require(taken.files().size() + taken.left_out().size() == command.attachments.size());
  std::multiset<std::string> left_out;
  for (const auto& one : taken.left_out()) {
    require(!one.reason.empty());
    left_out.insert(one.name);
  }
  for (const auto& path : command.attachments) {
    require(left_out.contains(path) || is_without_links(path));
  }
  for (const auto& file : taken.files()) {
    require(home().allows(file.path));
    require(!file.name.empty() && file.name.find('/') == std::string::npos);
  }
}

void check_draft(const std::string& url) {
  const compose::ReceivedDraft received(url);
  const std::string path = received.write();
  const auto draft = compose::read_draft(path);
  fs::remove(path);
  const auto asked = compose::read_compose_command(url).attachments.size();
  require(draft.attachments.size() + received.left_out().size() == asked);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  home();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string url = url_of({reinterpret_cast<const char*>(data), size});
  try {
    check_taken(compose::read_compose_command(url));
    check_draft(url);
  } catch (const compose::CannotCompose& refused) {
    require(*refused.what() != '\0');
  }
  require(fs::is_empty(compose::incoming_folder()));
  require(fs::is_empty(compose::drafts_folder()));
  return 0;
}
