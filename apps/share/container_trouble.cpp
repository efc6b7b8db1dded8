#include "apps/share/container_trouble.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>

#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/group_containers.h"
#include "quoll/linux/posix/temporary_item.h"
#include "quoll/linux/posix/writing_trial.h"

namespace quoll::share {

namespace {

namespace fs = std::filesystem;
namespace layout = container::layout;

/// What cannot be used, and the `errno` value that says why.
struct Trouble {
  std::string path;
  int error = 0;
};

std::string in_folder(const std::string& folder, std::string_view name) {
  return foundation::appending_path_component(folder, name);
}

std::optional<Trouble> trouble_with_folder(const std::string& path) {
  const int error = posix::try_writing(path);
  return error == 0 ? std::nullopt : std::optional(Trouble{path, error});
}

/// The files that a share locks are opened as a share opens them, and made when they are missing.
std::optional<Trouble> trouble_with_locks(const std::string& container) {
  const std::string path = in_folder(container, layout::locks);
  mkdir(path.c_str(), S_IRWXU);
  const auto folder = posix::open_file(path, O_PATH | O_DIRECTORY | O_NOFOLLOW);
  if (!folder) {
    return Trouble{path, errno};
  }
  const std::string data = "/" + ExtensionUtilities::GroupFolderName();
  for (const std::string& item : {std::string("/"), data, in_folder(data, layout::staging)}) {
    const std::string name = posix::lock_file_name(item);
    if (!posix::open_file_at(folder.get(), name, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK,
                             S_IRUSR | S_IWUSR)) {
      return Trouble{in_folder(path, name), errno};
    }
  }
  return std::nullopt;
}

/// A share replaces the staging folder, unless it cannot be read, or is another user's and
/// something is in it.
std::optional<Trouble> trouble_with_staging(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    return std::nullopt;
  }
  std::error_code error;
  if (status.st_uid != geteuid() && !fs::is_empty(path, error)) {
    return trouble_with_folder(path);
  }
  const bool is_closed = faccessat(AT_FDCWD, path.c_str(), R_OK | X_OK, AT_EACCESS) != 0;
  return is_closed ? std::optional(Trouble{path, errno}) : std::nullopt;
}

/// What keeps a share from putting files into the container.
std::optional<Trouble> trouble_in(const std::string& container) {
  if (!ExtensionUtilities::GroupPath()) {
    const std::string there = existing_part(container);
    auto trouble = trouble_with_folder(there);
    return trouble ? trouble : Trouble{there, EACCES};
  }
  if (auto trouble = trouble_with_folder(container)) {
    return trouble;
  }
  const posix::BuildingFolder unfinished = posix::open_folder_for_building(container);
  if (!unfinished.fd) {
    return Trouble{unfinished.path, errno};
  }
  if (auto trouble = trouble_with_folder(unfinished.path)) {
    return trouble;
  }
  if (auto trouble = trouble_with_locks(container)) {
    return trouble;
  }
  const std::string data = in_folder(container, ExtensionUtilities::GroupFolderName());
  std::error_code error;
  const fs::file_status kind = fs::symlink_status(data, error);
  if (!fs::exists(kind)) {
    return std::nullopt;
  }
  if (fs::is_symlink(kind)) {
    return Trouble{data, ELOOP};  // neither a share nor the receiver follows it
  }
  if (auto trouble = trouble_with_folder(data)) {
    return trouble;
  }
  return trouble_with_staging(in_folder(data, layout::staging));
}

std::string reason_of(const Trouble& trouble) {
  if (trouble.error != ENOTDIR && trouble.error != ELOOP) {
    return posix::error_words(trouble.error);
  }
  std::error_code unknown;
  return fs::is_symlink(fs::symlink_status(trouble.path, unknown)) ? "it is a link"
                                                                   : "it is no folder";
}

std::string quoted(const std::string& path) {
  return "\"" + foundation::printable(path) + "\"";
}

std::string advice_for(const Trouble& trouble) {
  std::string permission;
  switch (trouble.error) {
    case ENOTDIR:
    case ELOOP:
      return "move " + quoted(existing_part(trouble.path)) + " away";
    case ENOSPC:
    case EDQUOT:
      return "make room there";
    case EACCES:
    case EPERM:
      permission = permission_advice(trouble.path);
      break;
    default:
      break;
  }
  if (!permission.empty()) {
    return permission;
  }
  return "let QUOLL_GROUP_CONTAINERS name a folder that can be written, for the whole session";
}

}  // namespace

std::optional<ContainerTrouble> container_trouble() {
  const std::string begin = "the shared folder cannot be used: ";
  const auto containers = posix::group_containers_folder();
  if (!containers) {
    return ContainerTrouble{begin + "there is no place for it",
                            "set HOME, or XDG_DATA_HOME to an absolute path"};
  }
  const std::string path = in_folder(*containers, ExtensionUtilities::application_group);
  if (!foundation::is_utf8(path)) {
    return ContainerTrouble{
        begin + "its path is not UTF-8: " + foundation::printable(*containers),
        "let QUOLL_GROUP_CONTAINERS name a folder whose path is, for the whole session"};
  }
  const auto trouble = trouble_in(path);
  return trouble ? std::optional(ContainerTrouble{
                       begin + foundation::printable(trouble->path) + ": " + reason_of(*trouble),
                       advice_for(*trouble)})
                 : std::nullopt;
}

std::string permission_advice(const std::string& path) {
  const std::string there = existing_part(path);
  struct stat status {};
  if (lstat(there.c_str(), &status) != 0) {
    return "";
  }
  return (status.st_uid == geteuid() ? "chmod u+rwX " : "sudo chown -R \"$USER\" ") + quoted(there);
}

std::string existing_part(const std::string& path) {
  std::error_code ignored;
  fs::path there = path;
  while (!fs::exists(fs::symlink_status(there, ignored)) && there.has_relative_path()) {
    there = there.parent_path();
  }
  return there;
}

}  // namespace quoll::share
