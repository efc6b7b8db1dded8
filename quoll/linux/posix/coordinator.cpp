#include "quoll/linux/posix/coordinator.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <utility>
#include <vector>

#include "quoll/container/layout.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/percent.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/group_containers.h"
#include "quoll/linux/posix/paths.h"
#include "quoll/linux/posix/system_call.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::posix {

namespace {

using foundation::Error;
using foundation::NSURL;

/// Holds the locks of one access.
class Access {
 public:
  /// Waits for them. Answers 0 or an `errno` value.
  int take(const ContainerLocation& location) {
    const std::string path =
        foundation::appending_path_component(location.container, container::layout::locks);
    ::mkdir(path.c_str(), S_IRWXU);
    const UniqueFd folder = open_file(path, O_PATH | O_DIRECTORY | O_NOFOLLOW);
    if (!folder) {
      return errno;
    }
    const std::string_view inside = location.inside;
    int number = lock(folder.get(), "/", LOCK_SH);
    for (std::size_t end = inside.find('/', 1); number == 0 && end != std::string_view::npos;
         end = inside.find('/', end + 1)) {
      number = lock(folder.get(), inside.substr(0, end), LOCK_SH);
    }
    return number != 0 ? number : lock(folder.get(), inside, LOCK_EX);
  }

 private:
  int lock(int folder, std::string_view inside, int how) {
    const std::string name = lock_file_name(inside);
    // Open for writing too: network file systems grant an exclusive lock only then.
    UniqueFd file = open_file_at(folder, name, O_RDWR | O_CREAT | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    if (!file || uninterrupted([&] { return ::flock(file.get(), how); }) != 0) {
      return errno;
    }
    held_.push_back(std::move(file));
    return 0;
  }

  std::vector<UniqueFd> held_;
};

/// True for the folder of the locks and what is in it.
bool is_lock(std::string_view inside) {
  inside.remove_prefix(1);
  return inside.substr(0, inside.find('/')) == container::layout::locks;
}

class LockingCoordinator final : public platform::NSFileCoordinator {
 public:
  std::optional<Error> coordinateWritingItemAtURL(
      const std::shared_ptr<NSURL>& url, platform::NSFileCoordinatorWritingOptions /*options*/,
      const std::function<void(const std::shared_ptr<NSURL>&)>& accessor) override {
    const auto path = foundation::file_system_path(url);
    if (!path || !is_usable_path(*path)) {
      return foundation::file_error(ENOENT, path.value_or(""), true);
    }
    const auto location = locate_in_container(*path);
    if (!location || location->inside.empty() || is_lock(location->inside)) {
      Error error = foundation::file_error(EINVAL, *path, true);
      error.text = "Only what is inside a group container can be coordinated.";
      return error;
    }
    Access access;
    if (const int number = access.take(*location)) {
      return foundation::file_error(number, *path, true);
    }
    accessor(url);
    return std::nullopt;
  }
};

std::uint64_t fnv1a(std::string_view text) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char byte : text) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  }
  return hash;
}

}  // namespace

std::string lock_file_name(std::string_view inside) {
  constexpr std::string_view kEnding = ".lock";
  std::string name = foundation::percent_encode(inside).append(kEnding);
  if (name.size() > NAME_MAX) {
    char hashed[18];
    std::snprintf(hashed, sizeof hashed, "h%016llx", static_cast<unsigned long long>(fnv1a(name)));
    name = std::string(hashed).append(kEnding);
  }
  return name;
}

std::function<std::unique_ptr<platform::NSFileCoordinator>()> coordinator_factory() {
  return [] { return std::make_unique<LockingCoordinator>(); };
}

}  // namespace quoll::posix
