#include "apps/share/staging_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <string>

#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/lock_holder.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::share {

namespace {

/// Where the lock file is; none without a container.
std::optional<std::string> lock_path() {
  const auto path = foundation::file_system_path(ExtensionUtilities::GroupPath());
  return path ? std::optional(*path + "/" + std::string(container::layout::locks) + "/" +
                              std::string(container::layout::turn))
              : std::nullopt;
}

/// Opens the lock file, and makes it when it is missing. It is never deleted: otherwise two shares
/// could each hold a lock on a file of that name.
posix::UniqueFd lock_file() {
  const auto name = lock_path();
  if (!name) {
    return posix::UniqueFd();
  }
  // It may exist already; any other failure shows at `open_file`.
  mkdir(name->substr(0, name->rfind('/')).c_str(), 0700);
  posix::UniqueFd file = posix::open_file(*name, O_RDWR | O_CREAT | O_NOFOLLOW, 0600);
  if (!file) {
    file = posix::open_file(*name, O_RDONLY | O_NOFOLLOW);
  }
  return file;
}

bool try_for_a_second(int file) {
  constexpr int kTries = 20;
  constexpr useconds_t kPause = 50'000;
  for (int i = 0; i < kTries; ++i) {
    if (flock(file, LOCK_EX | LOCK_NB) == 0) {
      return true;
    }
    usleep(kPause);
  }
  return false;
}

bool lock(int file, const std::string& holder) {
  if (isatty(STDERR_FILENO) == 1) {
    if (try_for_a_second(file)) {
      return true;
    }
    const std::string who = holder.empty() ? "" : " (" + holder + ")";
    static_cast<void>(
        posix::write_all(STDERR_FILENO, "waiting for another share" + who + " to finish\n"));
  }
  return posix::uninterrupted([&] { return flock(file, LOCK_EX); }) == 0;
}

}  // namespace

std::string staging_lock_holder() {
  const auto path = isatty(STDERR_FILENO) == 1 ? lock_path() : std::nullopt;
  const auto holder = path ? posix::lock_holder(*path) : std::nullopt;
  return holder && holder->process != 0 ? foundation::printable(holder->program) + ", process " +
                                              std::to_string(holder->process)
                                        : "";
}

StagingLock lock_staging(const std::string& holder) {
  posix::UniqueFd file = lock_file();
  if (file && !lock(file.get(), holder)) {
    file.reset();
  }
  return file;
}

}  // namespace quoll::share
