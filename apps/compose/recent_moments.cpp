#include "apps/compose/recent_moments.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>

#include "apps/compose/compose_error.h"
#include "apps/compose/folders.h"
#include "apps/compose/moment.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::compose {
namespace {

[[noreturn]] void fail(const std::string& path) {
  throw ComposeError(path + " cannot be used: " + std::strerror(errno));
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
  const std::string path =
      moments == Moments::kOffers ? recent_offers_file() : recent_floods_file();
  const posix::UniqueFd file(
      open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  std::string lines;
  bool ended = false;
  constexpr std::size_t kEnough = 4096;
  if (!file || posix::uninterrupted([&] { return flock(file.get(), LOCK_EX); }) != 0 ||
      !posix::read_until(file.get(), lines, kEnough, ended)) {
    fail(path);
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
    fail(path);
  }
  return true;
}

}  // namespace quoll::compose
