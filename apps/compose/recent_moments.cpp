#include "apps/compose/recent_moments.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>

#include "apps/compose/compose_error.h"
#include "apps/compose/folders.h"
#include "apps/compose/moment.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {
namespace {

std::string path_of(Moments moments) {
  return moments == Moments::kOffers ? recent_offers_file() : recent_floods_file();
}

[[noreturn]] void fail(Moments moments, const std::string& reason) {
  throw ComposeError(path_of(moments) + " cannot be used: " + reason);
}

/// These programs hold the lock for a moment only; whoever holds it longer is none of them.
bool lock_soon(int file) {
  constexpr int kTries = 100;
  constexpr auto kPause = std::chrono::milliseconds(10);
  for (int i = 0; i < kTries; ++i) {
    if (flock(file, LOCK_EX | LOCK_NB) == 0) {
      return true;
    }
    std::this_thread::sleep_for(kPause);
  }
  return false;
}

/// The file of the list, locked.
posix::UniqueFd opened(Moments moments) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  posix::UniqueFd file(open(path_of(moments).c_str(), kFlags, S_IRUSR | S_IWUSR));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0) {
    fail(moments, std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    fail(moments, "it is no file");
  }
  if (!lock_soon(file.get())) {
    fail(moments, "another program has locked it");
  }
  return file;
}

/// The lines that are not older than ten seconds; those of an earlier start of the system are.
std::string recent(const std::string& lines, const Moment& now, std::size_t& count) {
  constexpr std::int64_t kLong = 10;
  std::string kept;
  std::istringstream all(lines);
  for (std::string line; std::getline(all, line);) {
    const std::int64_t age = age_of(line, {}, now);
    if (age >= 0 && age < kLong) {
      kept += line + "\n";
      ++count;
    }
  }
  return kept;
}

}  // namespace

bool note_unless_frequent(Moments moments, std::size_t most) {
  const posix::UniqueFd file = opened(moments);
  std::string lines;
  bool ended = false;
  constexpr std::size_t kEnough = 4096;
  if (!posix::read_until(file.get(), lines, kEnough, ended)) {
    fail(moments, std::strerror(errno));
  }
  const Moment now = present_moment();
  std::size_t count = 0;
  lines = recent(lines, now, count);
  if (count >= most) {
    return false;
  }
  lines += mark_of(now);
  if (ftruncate(file.get(), 0) != 0 || lseek(file.get(), 0, SEEK_SET) != 0 ||
      !posix::write_all(file.get(), lines)) {
    fail(moments, std::strerror(errno));
  }
  return true;
}

void try_moments() {
  for (const Moments moments : {Moments::kOffers, Moments::kFloodsToldOf}) {
    static_cast<void>(opened(moments));
  }
}

}  // namespace quoll::compose
