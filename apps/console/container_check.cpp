#include "apps/console/container_check.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "apps/console/staged_copies.h"
#include "quoll/container/group_container.h"
#include "quoll/container/layout.h"
#include "quoll/foundation/path.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/group_containers.h"
#include "quoll/linux/posix/lock_holder.h"
#include "quoll/linux/posix/temporary_item.h"
#include "quoll/linux/posix/writing_trial.h"

namespace quoll::console {

namespace {

namespace fs = std::filesystem;
namespace layout = container::layout;
using State = Finding::State;

/// What cannot be used, and the `errno` value that says why.
struct Trouble {
  std::string path;
  int error = 0;
};

std::string in_folder(const std::string& folder, std::string_view name) {
  return foundation::appending_path_component(folder, name);
}

/// Closes the container to others, and removes what killed shares have left in it. A failure shows
/// in the checks that follow.
void repair_container(const std::string& path) {
  static_cast<void>(ExtensionUtilities::GroupPath());
  std::error_code ignored;
  fs::permissions(path, fs::perms::group_all | fs::perms::others_all, fs::perm_options::remove,
                  ignored);
  posix::sweep_temporary_items(path);
}

/// The part of a path that exists already.
std::string existing_part(fs::path path) {
  std::error_code ignored;
  while (!fs::exists(fs::symlink_status(path, ignored)) && path.has_relative_path()) {
    path = path.parent_path();
  }
  return path;
}

/// Beside the folder of the drafts, and so on the same disk.
std::string drafts_place() {
  return posix::group_containers_folder([](const char* name) {
           return std::string_view(name) == "QUOLL_GROUP_CONTAINERS" ? nullptr : std::getenv(name);
         })
      .value_or("/");
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
  // A share replaces the staging folder, unless it is another user's and something is in it.
  const std::string staging = in_folder(data, layout::staging);
  struct stat status {};
  const bool is_of_another = lstat(staging.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
                             status.st_uid != geteuid() && !fs::is_empty(staging, error);
  return is_of_another ? trouble_with_folder(staging) : std::nullopt;
}

std::string advice_for(const Trouble& trouble) {
  const std::string path = "\"" + trouble.path + "\"";
  struct stat status {};
  switch (trouble.error) {
    case ENOTDIR:
    case ELOOP:
      return "move " + path + " away";
    case ENOSPC:
    case EDQUOT:
      return "make room there";
    case EACCES:
    case EPERM:
      if (lstat(trouble.path.c_str(), &status) == 0) {
        return status.st_uid == geteuid() ? "chmod u+rwX " + path
                                          : "sudo chown -R \"$USER\" " + path;
      }
      break;
    default:
      break;
  }
  return "let QUOLL_GROUP_CONTAINERS name a folder elsewhere, for the whole session";
}

Finding container(const std::optional<std::string>& path) {
  const std::string name = "container";
  if (!path) {
    return {name, State::kBroken, "there is no place for it",
            "set HOME, or XDG_DATA_HOME to an absolute path"};
  }
  if (!foundation::is_utf8(*path)) {
    return {name, State::kBroken, "its path is not UTF-8: " + *path,
            "let QUOLL_GROUP_CONTAINERS name a folder whose path is, for the whole session"};
  }
  if (auto trouble = trouble_in(*path)) {
    return {name, State::kBroken,
            trouble->path + " cannot be used: " + posix::error_words(trouble->error),
            advice_for(*trouble)};
  }
  struct stat status {};
  if (stat(path->c_str(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    return {name, State::kWorthKnowing, *path + " is open to other users",
            "chmod 700 \"" + *path + "\", or quollctl doctor --fix"};
  }
  return {name, State::kGood, *path, ""};
}

/// The room of the disk with less of it: that of the shared folder, or that of the drafts.
Finding space(const std::string& path) {
  constexpr std::uintmax_t kKibibyte = 1024;
  constexpr std::uintmax_t kMebibyte = 1024 * kKibibyte;
  constexpr std::uintmax_t kLittle = 100 * kMebibyte;
  std::string least;
  std::uintmax_t free = UINTMAX_MAX;
  for (const std::string& folder : {path, drafts_place()}) {
    std::error_code error;
    const std::string there = existing_part(folder);
    const fs::space_info room = fs::space(there, error);
    if (!error && room.available < free) {
      least = there;
      free = room.available;
    }
  }
  if (least.empty()) {
    return {"space", State::kGood, "not known", ""};
  }
  const std::string found = (free < kMebibyte ? std::to_string(free / kKibibyte) + " KiB"
                                              : std::to_string(free / kMebibyte) + " MiB") +
                            " free in " + least;
  if (free < posix::kSmallDraft) {
    return {"space", State::kBroken, found, "make room there: nothing can be kept"};
  }
  return free < kLittle ? Finding{"space", State::kWorthKnowing, found,
                                  "make room there before large files are shared"}
                        : Finding{"space", State::kGood, found, ""};
}

/// Whether a share waits for the holder of the lock in this file. It locks its turn and the staging
/// folder for itself, and what is above that folder together with others.
bool is_waited_for(const std::string& file, const posix::LockHolder& holder) {
  const std::string data = "/" + ExtensionUtilities::GroupFolderName();
  return file == layout::turn || file == posix::lock_file_name(in_folder(data, layout::staging)) ||
         (!holder.is_shared &&
          (file == posix::lock_file_name("/") || file == posix::lock_file_name(data)));
}

Finding held_lock(const posix::LockHolder& holder, bool is_waited_for) {
  if (holder.process == 0) {
    return {"locks", State::kWorthKnowing, "a program uses the shared folder",
            "wait for it: the next share does too"};
  }
  std::ostringstream who;
  const std::string number = std::to_string(holder.process);
  who << (holder.program.empty() ? "a program" : holder.program) << " (process " << number
      << ", started " << std::put_time(std::localtime(&holder.began), "%F %T") << ")";
  if (is_waited_for && holder.is_stopped) {
    return {"locks", State::kBroken,
            who.str() + " was stopped in its work on the shared folder: shares wait until it ends",
            "kill -CONT " + number + " lets it go on, kill -KILL " + number + " ends it"};
  }
  return {"locks", State::kWorthKnowing, who.str() + " uses the shared folder: a new share waits",
          "wait for it; if it hangs, kill " + number + " ends it"};
}

/// Who uses the shared folder; of several the one that shares wait for in vain.
Finding locks(const std::string& container) {
  Finding finding{"locks", State::kGood, "nobody holds one", ""};
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(in_folder(container, layout::locks), none)) {
    const auto holder = posix::lock_holder(entry.path());
    if (holder && finding.state != State::kBroken) {
      finding = held_lock(*holder, is_waited_for(entry.path().filename(), *holder));
    }
  }
  return finding;
}

Finding copies() {
  const StagedCopies copies = staged_copies();
  if (!copies.trouble.empty()) {
    return {"shared copies", State::kWorthKnowing, "not known: " + copies.trouble,
            "see what it is, and move it away"};
  }
  if (copies.files == 0) {
    return {"shared copies", State::kGood, "none", ""};
  }
  return {"shared copies", State::kGood,
          in_words(copies) + " of the last share, until the next one, in " + copies.folder,
          "quollctl forget removes them now"};
}

}  // namespace

std::vector<Finding> check_container(bool repair) {
  const auto folder = posix::group_containers_folder();
  if (!folder) {
    return {container(folder)};
  }
  const std::string path = in_folder(*folder, ExtensionUtilities::application_group);
  if (repair) {
    repair_container(path);
  }
  const auto holders = locks(path);  // before this program opens any
  return {container(path), space(path), holders, copies()};
}

}  // namespace quoll::console
