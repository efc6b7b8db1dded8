#include "apps/compose/taken_files.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "apps/compose/cannot_compose.h"
#include "apps/compose/places.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/posix/system_call.h"
#include "quoll/linux/posix/unique_fd.h"
#include "quoll/platform/files.h"

namespace quoll::compose {
namespace {

// The staging folder: that of the service "Share".
std::string staging_folder() {
  const auto path = foundation::file_system_path(ExtensionUtilities::GroupDataPath());
  return path ? foundation::appending_path_component(*path, container::layout::staging)
              : std::string();
}

// Opens `inside`, a path below the folder, without following links and without leaving the folder.
// The kernel asks to try again when the folder changes meanwhile.
posix::UniqueFd open_inside(int folder, const std::string& inside) {
  open_how how{};
  how.flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  constexpr int kTries = 16;
  long fd = -1;
  for (int tried = 0; fd < 0 && tried < kTries && (tried == 0 || errno == EAGAIN); ++tried) {
    fd = posix::uninterrupted(
        [&] { return syscall(SYS_openat2, folder, inside.c_str(), &how, sizeof(how)); });
  }
  return posix::UniqueFd(static_cast<int>(fd));
}

std::string reason_for(int error) {
  switch (error) {
    case EXDEV:
      return "it is outside the shared folder";
    case ELOOP:
      return "it is a link, or lies behind one";
    default:
      return std::strerror(error);
  }
}

}  // namespace

TakenFiles::TakenFiles(const std::vector<std::string>& paths) {
  if (paths.empty()) {
    return;
  }
  const std::string staging_path = staging_folder();
  const posix::UniqueFd staging(open(staging_path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  try {
    for (const auto& path : paths) {
      take(staging.get(), staging_path, path);
    }
  } catch (...) {
    remove();
    throw;
  }
}

TakenFiles::~TakenFiles() {
  remove();
}

void TakenFiles::take(int staging, const std::string& staging_path, const std::string& path) {
  const std::string above = staging_path + "/";
  if (staging < 0) {
    left_out_.push_back({path, "the shared folder is not there"});
    return;
  }
  if (!path.starts_with(above) || path.find('\0') != std::string::npos) {
    left_out_.push_back({path, "it is outside the shared folder"});
    return;
  }
  const posix::UniqueFd file = open_inside(staging, path.substr(above.size()));
  struct stat status {};
  if (file.get() < 0 || fstat(file.get(), &status) != 0) {
    left_out_.push_back({path, reason_for(errno)});
  } else if (!S_ISREG(status.st_mode)) {
    left_out_.push_back({path, S_ISDIR(status.st_mode) ? "it is a folder" : "it is no file"});
  } else {
    keep(file.get(), std::string(foundation::last_path_component(path)));
  }
}

// Hard-links the file, which takes no room and stays when the staged name goes. Where a hard link
// is not possible (another file system, another user's file), the file is copied.
void TakenFiles::keep(int file, const std::string& name) {
  if (folder_.empty()) {
    std::string folder = incoming_folder() + "/XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
      throw CannotCompose("no folder can be made in " + incoming_folder() + ": " +
                          std::strerror(errno));
    }
    folder_ = folder;
  }
  const std::string source = "/proc/self/fd/" + std::to_string(file);
  const std::string path = folder_ + "/" + std::to_string(files_.size());
  if (linkat(AT_FDCWD, source.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) != 0) {
    if (const auto error =
            platform::NSFileManager::defaultManager()->copyItemAtPath(source, path)) {
      throw CannotCompose(name + " cannot be taken: " + error->text);
    }
  }
  files_.push_back({name, path});
}

void TakenFiles::remove() {
  if (folder_.empty()) {
    return;
  }
  // What is left does no harm.
  static_cast<void>(platform::NSFileManager::defaultManager()->removeItemAtURL(
      platform::fileURLWithPath(folder_)));
}

}  // namespace quoll::compose
