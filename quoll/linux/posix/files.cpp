#include "quoll/linux/posix/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>

#include "quoll/foundation/path.h"
#include "quoll/linux/posix/copy_item.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/file_contents.h"
#include "quoll/linux/posix/folder_cursor.h"
#include "quoll/linux/posix/group_containers.h"
#include "quoll/linux/posix/paths.h"
#include "quoll/linux/posix/remove_item.h"
#include "quoll/linux/posix/temporary_item.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::posix {

namespace {

using foundation::Bytes;
using foundation::Error;
using foundation::NSURL;

constexpr off_t kLargestRead = off_t{1} << 30;
constexpr mode_t kFileMode = 0666;  // less what the user's umask takes away

Error error_of(const FileFailure& failure, std::string_view path) {
  Error error = foundation::file_error(failure.number, path, failure.writing);
  if (!failure.text.empty()) {
    error.text = failure.text;
  }
  return error;
}

/// The error of an `errno` value; 0 is success.
std::optional<Error> error_of(int number, std::string_view path) {
  return number == 0 ? std::nullopt : std::optional(foundation::file_error(number, path, true));
}

/// The path of a file URL; empty for what has none.
std::string path_of(const std::shared_ptr<NSURL>& url) {
  const auto path = foundation::file_system_path(url);
  return path && is_usable_path(*path) ? *path : std::string();
}

/// What is at a path, links followed; 0 when nothing is there.
mode_t mode_at(std::string_view path) {
  struct stat status {};
  const bool exists = is_usable_path(path) && ::stat(std::string(path).c_str(), &status) == 0;
  return exists ? status.st_mode : 0;
}

/// Makes the folder at an absolute path and those above it; answers 0 or an `errno` value.
int make_folders(const std::string& path, mode_t mode) {
  for (std::size_t end = 0; end != std::string::npos;) {
    end = path.find('/', end + 1);
    const std::string folder = path.substr(0, end);
    if (::mkdir(folder.c_str(), mode) != 0) {
      const int number = errno;
      if (!S_ISDIR(mode_at(folder))) {
        return number;
      }
    }
  }
  return 0;
}

UniqueFd open_parent(const ParentAndName& entry) {
  return open_file(entry.parent, O_PATH | O_DIRECTORY);
}

/// Writes all of it; answers 0 or an `errno` value.
int write_error(int file, const Bytes& data) {
  return write_all(file, data) ? late_write_error(file) : errno;
}

int replace_file(const Bytes& data, const std::string& path) {
  const ParentAndName entry = parent_and_name(path);
  if (!entry.names_an_entry()) {
    return EISDIR;
  }
  const UniqueFd folder = open_parent(entry);
  BuildingFolder building = folder ? open_building_folder(path, folder.get()) : BuildingFolder{};
  if (!building.fd) {
    return errno;
  }
  TemporaryItem item(std::move(building));
  int number = item.make_file(kFileMode);
  if (number == 0) {
    number = write_error(item.fd(), data);
  }
  return number != 0 ? number : item.place_over(folder.get(), entry.name);
}

int write_file(const Bytes& data, const std::string& path) {
  const UniqueFd file =
      open_file(path, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_NOCTTY, kFileMode);
  if (!file) {
    return errno;
  }
  return write_error(file.get(), data);
}

Outcome read_file(const std::string& path, Bytes& data) {
  const UniqueFd file = open_file(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0) {
    return FileFailure{errno, false};
  }
  if (!S_ISREG(status.st_mode)) {
    return FileFailure{S_ISDIR(status.st_mode) ? EISDIR : EINVAL, false};
  }
  if (status.st_size > kLargestRead) {
    return FileFailure{EFBIG, false};
  }
  // Files of /proc claim to be empty, and a file may grow: it is read until it ends.
  data.reserve(static_cast<std::size_t>(status.st_size) + 1);
  bool ended = false;
  if (!read_until(file.get(), data, static_cast<std::size_t>(kLargestRead) + 1, ended)) {
    return FileFailure{errno, false};
  }
  return ended ? Outcome() : FileFailure{EFBIG, false};
}

class PosixFiles final : public platform::NSFileManager {
 public:
  std::shared_ptr<NSURL> containerURLForSecurityApplicationGroupIdentifier(
      std::string_view group) override {
    const auto root = group_containers_folder();
    const bool is_name = is_usable_path(group) && group.find('/') == std::string_view::npos &&
                         group != "." && group != "..";
    if (!root || !is_name) {
      return nullptr;
    }
    const std::string path = foundation::appending_path_component(*root, group);
    return make_folders(path, S_IRWXU) == 0 ? NSURL::file_url(path, true) : nullptr;
  }

  std::optional<Error> removeItemAtURL(const std::shared_ptr<NSURL>& url) override {
    const std::string path = path_of(url);
    return error_of(remove(path), path);
  }

  std::optional<Error> createDirectoryAtURL(const std::shared_ptr<NSURL>& url) override {
    const std::string path = path_of(url);
    return error_of(path.empty() ? ENOENT : make_folders(path, 0777), path);
  }

  std::optional<Error> copyItemAtPath(std::string_view source,
                                      std::string_view destination) override {
    const auto failure = copy(source, destination);
    if (!failure) {
      return std::nullopt;
    }
    Error error = error_of(*failure, failure->writing ? destination : source);
    if (failure->writing) {
      error.user_info.emplace_back("NSSourceFilePathErrorKey", std::string(source));
    } else {
      error.user_info.emplace_back("NSDestinationFilePath", std::string(destination));
    }
    return error;
  }

  bool fileExistsAtPath(std::string_view path) override { return mode_at(path) != 0; }

  bool isDirectoryAtPath(std::string_view path) override { return S_ISDIR(mode_at(path)); }

  std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(
      std::string_view path) override {
    if (!is_usable_path(path)) {
      return std::nullopt;
    }
    const UniqueFd folder = open_file(std::string(path), O_RDONLY | O_DIRECTORY);
    std::vector<std::string> names;
    if (!folder || list_folder(folder.get(), names, Listed::kExisting) != 0) {
      return std::nullopt;
    }
    return names;
  }

  platform::FileContents contentsAtPath(std::string_view path) override {
    platform::FileContents contents;
    const Outcome failure = is_usable_path(path)
                                ? read_file(std::string(path), std::get<Bytes>(contents))
                                : Outcome(FileFailure{ENOENT, false});
    if (failure) {
      Error& error = contents.emplace<Error>(error_of(*failure, path));
      if (failure->number == EFBIG) {
        error.code = foundation::NSFileReadTooLargeError;
      }
    }
    return contents;
  }

  std::optional<Error> writeToFile(const Bytes& data, std::string_view path,
                                   platform::NSDataWritingOptions options) override {
    if (!is_usable_path(path)) {
      return error_of(ENOENT, path);
    }
    const std::string name(path);
    const bool is_atomic = (options & platform::NSDataWritingAtomic) != 0;
    return error_of(is_atomic ? replace_file(data, name) : write_file(data, name), path);
  }

  std::string currentDirectoryPath() override {
    const std::unique_ptr<char, decltype(&std::free)> path(::getcwd(nullptr, 0), &std::free);
    // A working directory that lies outside the root comes as "(unreachable)...".
    return path && *path == '/' ? std::string(path.get()) : std::string();
  }

 private:
  static int remove(const std::string& path) {
    if (path.empty()) {
      return ENOENT;
    }
    const ParentAndName entry = parent_and_name(path);
    if (!entry.names_an_entry()) {
      return EBUSY;  // a folder that nobody means to remove by such a name
    }
    const UniqueFd parent = open_parent(entry);
    return parent ? remove_item(parent.get(), entry.name) : errno;
  }

  Outcome copy(std::string_view source, std::string_view destination) {
    if (!is_usable_path(source)) {
      return FileFailure{ENOENT, false};
    }
    if (!is_usable_path(destination)) {
      return FileFailure{ENOENT, true};
    }
    if (destination.starts_with('/')) {
      return copy_item(std::string(source), std::string(destination));
    }
    return copy_item(std::string(source),
                     foundation::appending_path_component(currentDirectoryPath(), destination));
  }
};

}  // namespace

std::shared_ptr<platform::NSFileManager> make_file_manager() {
  return std::make_shared<PosixFiles>();
}

}  // namespace quoll::posix
