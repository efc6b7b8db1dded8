#include "quoll/linux/posix/lock_holder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>

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

std::string program_name(int process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
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
      holder = {process > 0 ? process : 0, process > 0 ? program_name(process) : ""};
    }
  }
  return holder;
}

}  // namespace quoll::posix
