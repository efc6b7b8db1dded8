#include "apps/share/request/prepared_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

namespace quoll::share {

namespace {

/// Null with `errno` set when there can be none.
std::unique_ptr<posix::TemporaryItem> make_folder(const std::string& container) {
  posix::BuildingFolder incoming = posix::open_folder_for_building(container);
  if (!incoming.fd) {
    return nullptr;
  }
  auto folder = std::make_unique<posix::TemporaryItem>(std::move(incoming));
  if (const int error = folder->make_folder(); error != 0) {
    errno = error;
    return nullptr;
  }
  return folder;
}

}  // namespace

PreparedFiles::File PreparedFiles::make(std::string_view name, mode_t mode) {
  const auto path = make_place(name);
  if (!path) {
    return {};
  }
  return {posix::UniqueFd(open(path->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode)),
          *path};
}

std::optional<std::string> PreparedFiles::make_place(std::string_view name) {
  if (!folder_) {
    folder_ = make_folder(container_);
  }
  const std::string number = std::to_string(++count_);
  if (!folder_ || mkdirat(folder_->fd(), number.c_str(), 0700) != 0) {
    return std::nullopt;
  }
  return folder_->path() + "/" + number + "/" + std::string(name);
}

}  // namespace quoll::share
