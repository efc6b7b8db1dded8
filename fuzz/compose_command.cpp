// Gives any text to the receiver as a command URL; the byte 1 stands for the path of the staging
// folder. Either the command is refused with a sentence, or what is taken are exactly the regular
// files inside the folder that are reached without a link, each once. Each other attachment is left
// out with a reason.

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "apps/compose/compose_error.h"
#include "apps/compose/folders.h"
#include "apps/compose/taker.h"
#include "apps/compose/waiting_files.h"
#include "fuzz/require.h"
#include "quoll/linux/posix/files.h"
#include "quoll/message/received_command.h"
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

/// The files of a taken draft are those that the command names, each once; all else is left out.
void check_taken(const std::string& url, const compose::TakenDraft& draft) {
  const std::vector<std::string> asked = read_received_command(url).attachments;
  const compose::LeftOutFiles left_out = draft.left_out();
  std::multiset<std::string> names;
  for (const auto& one : left_out.named) {
    require(!one.reason.empty());
    names.insert(one.name);
  }
  for (std::string path : asked) {
    std::ranges::replace(path, '\0', ' ');
    require(left_out.more != 0 || names.contains(path) || is_without_links(path));
  }
  const auto files = compose::waiting_files(draft.folder());
  require(files.size() + left_out.count() <= asked.size());
  for (const auto& file : files) {
    require(home().allows(draft.path() + "/" + path_of(file)));
    require(!file.name.empty() && file.name.find('/') == std::string::npos);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  home();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string url = url_of({reinterpret_cast<const char*>(data), size});
  try {
    auto drafts = compose::take({url});
    require(drafts.size() == 1);
    check_taken(url, drafts.front());
    static_cast<void>(drafts.front().remove());
  } catch (const compose::ComposeError& refused) {
    require(*refused.what() != '\0');
  }
  require(fs::is_empty(compose::taken_folder()));
  return 0;
}
