#include "apps/compose/folders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "apps/compose/compose_error.h"
#include "apps/compose/recent_moments.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/writing_trial.h"

namespace quoll::compose {
namespace {

std::string absolute_path_in(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value == '/' ? value : "";
}

std::string receiver_folder() {
  if (const auto folder = absolute_path_in("XDG_DATA_HOME"); !folder.empty()) {
    return folder + "/quoll-compose";
  }
  return home_folder() + "/.local/share/quoll-compose";
}

[[noreturn]] void cannot_read(const std::string& folder, int error) {
  throw ComposeError("the folder " + folder + " cannot be read: " + posix::error_words(error));
}

[[noreturn]] void cannot_keep(const std::string& folder, int error) {
  const bool is_closed = error == EACCES || error == EPERM || error == EROFS;
  const bool is_full = error == ENOSPC || error == EDQUOT;
  throw ComposeError("nothing can be kept in " + folder + ": " + posix::error_words(error),
                     is_closed ? "make that folder writable for you"
                     : is_full ? "make room on its disk"
                               : "");
}

void make_folder(const std::string& path) {
  for (auto slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string folder = path.substr(0, slash);
    if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
      throw ComposeError("the folder " + folder + " cannot be made: " + std::strerror(errno));
    }
    if (struct stat status{}; stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
      throw ComposeError(folder + " is no folder, or a link to none; move it away");
    }
    if (slash == std::string::npos) {
      return;
    }
  }
}

}  // namespace

std::string home_folder() {
  std::string home = absolute_path_in("HOME");
  if (home.empty()) {
    throw ComposeError("there is no home folder to keep drafts in; set HOME");
  }
  return home;
}

std::string taken_folder() {
  return receiver_folder() + "/taken";
}

std::string drafts_folder() {
  return receiver_folder() + "/drafts";
}

std::string given_folder() {
  return receiver_folder() + "/given";
}

std::string incoming_folder() {
  return receiver_folder() + "/incoming";
}

std::string recent_offers_file() {
  return receiver_folder() + "/recent-offers";
}

std::string recent_floods_file() {
  return receiver_folder() + "/recent-floods";
}

std::string message_file(const std::string& draft) {
  return drafts_folder() + "/" + draft + std::string(kMessageEnding);
}

std::string unfinished_message_file(const std::string& draft) {
  return drafts_folder() + "/." + draft + std::string(kMessageEnding);
}

posix::UniqueFd open_folder(const std::string& path) {
  posix::UniqueFd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) {
    cannot_read(path, errno);
  }
  return folder;
}

std::vector<std::string> names_in(const std::string& path) {
  std::vector<std::string> names;
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0 && errno == ENOENT) {
    return names;
  }
  if (const int error = posix::list_folder(open_folder(path).get(), names)) {
    cannot_read(path, error);
  }
  return names;
}

void make_folders() {
  make_folder(taken_folder());
  make_folder(drafts_folder());
  make_folder(given_folder());
}

void require_writable_folders() {
  make_folders();
  for (const std::string& folder : {taken_folder(), drafts_folder()}) {
    if (access(folder.c_str(), R_OK | W_OK | X_OK) != 0) {
      cannot_keep(folder, errno);
    }
  }
}

void try_folders() {
  require_writable_folders();
  for (const std::string& folder : {taken_folder(), drafts_folder()}) {
    if (const int error = posix::try_writing(folder)) {
      cannot_keep(folder, error);
    }
  }
  try_moments();
}

}  // namespace quoll::compose
