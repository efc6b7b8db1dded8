#include "apps/compose/staging_folder.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/linux/posix/system_call.h"

namespace quoll::compose {
namespace {

// Opens `inside`, a path below the folder, without following links and without leaving the folder.
// The kernel asks to try again when the folder changes meanwhile.
posix::UniqueFd open_inside(int folder, const std::string& inside, std::uint64_t flags) {
  open_how how{};
  how.flags = flags | O_CLOEXEC;
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

std::string folder_reason(int error) {
  switch (error) {
    case ELOOP:
      return "the shared folder is a link, or lies behind one";
    case ENOENT:
    case ENOTDIR:
      return "the shared folder is not there";
    default:
      return std::string("the shared folder cannot be opened: ") + std::strerror(error);
  }
}

/// Why a file that was opened is left out; empty when it is not.
std::string refusal(const struct stat& status) {
  if (!S_ISREG(status.st_mode)) {
    return S_ISDIR(status.st_mode) ? "it is a folder" : "it is no file";
  }
  return status.st_uid == geteuid() ? "" : "it belongs to another user";
}

}  // namespace

StagingFolder::StagingFolder() : error_(ENOENT) {
  const auto container = ExtensionUtilities::GroupPath();
  const auto path = foundation::file_system_path(container);
  if (!path) {
    return;
  }
  const std::string inside =
      ExtensionUtilities::GroupFolderName() + "/" + std::string(container::layout::staging);
  path_ = *path + "/" + inside + "/";
  // Its owner may have put the container elsewhere; what is in it, a share may have put there.
  const posix::UniqueFd group(::open(path->c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (group) {
    folder_ = open_inside(group.get(), inside, O_PATH | O_DIRECTORY);
  }
  error_ = errno;
}

StagedFile StagingFolder::open(const std::string& path) const {
  StagedFile file;
  if (!folder_) {
    file.reason = folder_reason(error_);
    return file;
  }
  if (!path.starts_with(path_) || path.find('\0') != std::string::npos) {
    file.reason = "it is outside the shared folder";
    return file;
  }
  file.fd = open_inside(folder_.get(), path.substr(path_.size()), O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat status {};
  if (!file.fd || fstat(file.fd.get(), &status) != 0) {
    file.reason = reason_for(errno);
  } else {
    file.reason = refusal(status);
    file.identity = {.device = status.st_dev, .inode = status.st_ino};
  }
  if (!file.reason.empty()) {
    file.fd.reset();
  }
  return file;
}

}  // namespace quoll::compose
