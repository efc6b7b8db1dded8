#include "quoll/linux/posix/lock_holder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::posix {

namespace {

/// "08:01:1234", as the list of locks names a file.
std::string name_in_list(const struct stat& status) {
  char name[64];
  std::snprintf(name, sizeof name, "%02x:%02x:%llu", major(status.st_dev), minor(status.st_dev),
                static_cast<unsigned long long>(status.st_ino));
  return name;
}

/// As the system has it, and not from two clocks: their difference is another second now and then.
std::time_t boot_time() {
  std::ifstream file("/proc/stat");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("btime ")) {
      return std::strtoll(line.c_str() + std::string_view("btime ").size(), nullptr, 10);
    }
  }
  return 0;
}

/// What the system tells of the process: "345 (name) S 1 ...", where a name may hold anything.
LockHolder holder_of(int process) {
  constexpr std::size_t kTicksFrom = 19;  // the ticks at its start, counted from the state
  LockHolder holder{.process = process};
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  const std::string line{std::istreambuf_iterator<char>(file), {}};
  const std::size_t begin = line.find('(');
  const std::size_t end = line.rfind(')');
  if (begin == std::string::npos || end == std::string::npos) {
    return holder;
  }
  holder.program = line.substr(begin + 1, end - begin - 1);
  std::istringstream rest(line.substr(end + 1));
  std::vector<std::string> words;
  for (std::string word; rest >> word;) {
    words.push_back(word);
  }
  if (words.size() > kTicksFrom) {
    holder.is_stopped = words[0] == "T" || words[0] == "t";
    holder.began =
        boot_time() + std::strtoll(words[kTicksFrom].c_str(), nullptr, 10) / sysconf(_SC_CLK_TCK);
  }
  return holder;
}

}  // namespace

std::optional<LockHolder> lock_holder(const std::string& path) {
  const UniqueFd file = open_file(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || ::flock(file.get(), LOCK_EX | LOCK_NB) == 0 ||
      errno != EWOULDBLOCK) {
    return std::nullopt;
  }
  LockHolder holder;
  const std::string wanted = name_in_list(status);
  std::ifstream list("/proc/locks");
  for (std::string line; std::getline(list, line);) {
    // "12: FLOCK  ADVISORY  WRITE 345 08:01:1234 0 EOF"; who waits has "->" behind the number
    std::istringstream words(line);
    std::string number;
    std::string kind;
    std::string force;
    std::string access;
    std::string where;
    int process = 0;
    words >> number >> kind >> force >> access >> process >> where;
    if (kind == "FLOCK" && where == wanted) {
      holder = process > 0 ? holder_of(process) : LockHolder{};
      holder.is_shared = access == "READ";
    }
  }
  return holder;
}

}  // namespace quoll::posix
