#include "apps/share/staging_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::share {

namespace {

/// Opens the lock file, and makes it when it is missing. It is never deleted: otherwise two shares
/// could each hold a lock on a file of that name.
posix::UniqueFd lock_file() {
  const auto container = ExtensionUtilities::GroupPath();
  const auto path = container ? container->file_system_path() : std::nullopt;
  if (!path) {
    return posix::UniqueFd();
  }
  const std::string folder = foundation::appending_path_component(*path, container::layout::locks);
  mkdir(folder.c_str(), 0700);  // it may exist already; any other failure shows at `open`
  const std::string name =
      foundation::appending_path_component(folder, container::layout::staging_lock);
  posix::UniqueFd file(open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file) {
    file = posix::UniqueFd(open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
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

bool lock(int file) {
  if (isatty(STDERR_FILENO) == 1) {
    if (try_for_a_second(file)) {
      return true;
    }
    static_cast<void>(posix::write_all(STDERR_FILENO, "waiting for another share to finish\n"));
  }
  return posix::uninterrupted([&] { return flock(file, LOCK_EX); }) == 0;
}

}  // namespace

StagingLock lock_staging() {
  posix::UniqueFd file = lock_file();
  if (file && !lock(file.get())) {
    file.reset();
  }
  return file;
}

}  // namespace quoll::share
