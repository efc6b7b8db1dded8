#include "apps/share/staging_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <string>
#include <thread>

#include "apps/share/interruption.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"

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

bool try_for(int file, std::chrono::milliseconds patience) {
  constexpr std::chrono::milliseconds kPause{50};
  for (auto waited = std::chrono::milliseconds::zero();; waited += kPause) {
    if (flock(file, LOCK_EX | LOCK_NB) == 0) {
      return true;
    }
    if (waited >= patience || Interruption::has_come()) {
      return false;
    }
    std::this_thread::sleep_for(kPause);
  }
}

bool is_at_terminal() {
  return isatty(STDERR_FILENO) == 1;
}

std::string line_about(const std::optional<posix::LockHolder>& holder) {
  const std::string begin = kWaiting;
  if (!holder || holder->process == 0) {
    return begin + " to finish\n";
  }
  const std::string number = std::to_string(holder->process);
  return begin + " (" + foundation::printable(holder->program) + ", process " + number + ")" +
         (holder->is_stopped ? ", which was stopped; kill -CONT " + number + " lets it go on\n"
                             : " to finish\n");
}

bool lock(int file, const std::optional<posix::LockHolder>& holder, const TellOfWaiting& tell) {
  constexpr std::chrono::seconds kPatience{10};
  constexpr std::chrono::seconds kPatienceAtTerminal{1};
  if (tell || is_at_terminal()) {
    const bool is_stopped = holder && holder->is_stopped;
    if (try_for(file, is_stopped ? std::chrono::seconds(0)
                      : tell     ? kPatience
                                 : kPatienceAtTerminal)) {
      return true;
    }
    if (Interruption::has_come()) {
      return false;
    }
    tell ? tell(line_about(holder))
         : static_cast<void>(posix::write_all(STDERR_FILENO, line_about(holder)));
  }
  if (Interruption::has_starter()) {
    return try_for(file, std::chrono::milliseconds::max());
  }
  while (!Interruption::has_come()) {
    if (flock(file, LOCK_EX) == 0) {
      return true;
    }
    if (errno != EINTR) {
      return false;
    }
  }
  return false;
}

}  // namespace

std::optional<posix::LockHolder> staging_lock_holder(const TellOfWaiting& tell) {
  const auto path = tell || is_at_terminal() ? lock_path() : std::nullopt;
  return path ? posix::lock_holder(*path) : std::nullopt;
}

StagingLock lock_staging(const std::optional<posix::LockHolder>& holder,
                         const TellOfWaiting& tell) {
  posix::UniqueFd file = lock_file();
  if (file && !lock(file.get(), holder, tell)) {
    file.reset();
  }
  return file;
}

}  // namespace quoll::share
