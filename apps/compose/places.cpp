#include "apps/compose/places.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "apps/compose/cannot_compose.h"
#include "apps/compose/given_drafts.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/posix/system_call.h"
#include "quoll/platform/files.h"

namespace quoll::compose {
namespace {

std::string absolute_path_in(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value == '/' ? value : "";
}

std::string data_folder() {
  if (auto folder = absolute_path_in("XDG_DATA_HOME"); !folder.empty()) {
    return folder;
  }
  if (auto home = absolute_path_in("HOME"); !home.empty()) {
    return home + "/.local/share";
  }
  throw CannotCompose("there is no home folder to keep drafts in; set HOME");
}

std::string made(const std::string& path) {
  for (auto slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string folder = path.substr(0, slash);
    if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
      throw CannotCompose("the folder " + folder + " cannot be made: " + std::strerror(errno));
    }
    if (slash == std::string::npos) {
      return path;
    }
  }
}

void lock(const posix::UniqueFd& folder, int operation) {
  if (posix::uninterrupted([&] { return flock(folder.get(), operation); }) != 0) {
    throw CannotCompose("the receiver's folder cannot be used: " +
                        std::string(std::strerror(errno)));
  }
}

posix::UniqueFd opened_incoming() {
  return posix::UniqueFd(open(incoming_folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

void remove_in(const std::string& folder, std::string_view prefix) {
  const auto files = platform::NSFileManager::defaultManager();
  for (const auto& name :
       files->contentsOfDirectoryAtPath(folder).value_or(std::vector<std::string>())) {
    if (name.starts_with(prefix)) {  // what cannot be removed is left to the next program
      static_cast<void>(files->removeItemAtURL(
          platform::fileURLWithPath(foundation::appending_path_component(folder, name))));
    }
  }
}

}  // namespace

std::string drafts_folder() {
  return made(data_folder() + "/quoll-compose/drafts");
}

std::string given_folder() {
  return made(data_folder() + "/quoll-compose/given");
}

std::string incoming_folder() {
  return made(data_folder() + "/quoll-compose/incoming");
}

posix::UniqueFd mark_draft_under_way() {
  posix::UniqueFd folder = opened_incoming();
  if (flock(folder.get(), LOCK_EX | LOCK_NB) == 0) {
    remove_in(incoming_folder(), "");
    remove_in(drafts_folder(), kUnfinishedDraft);
    clean_given_drafts(present_moment());
  }
  lock(folder, LOCK_SH);
  return folder;
}

void wait_for_drafts_under_way() {
  lock(opened_incoming(), LOCK_EX);
}

}  // namespace quoll::compose
