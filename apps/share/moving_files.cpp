#include "apps/share/moving_files.h"

#include <fcntl.h>

#include "quoll/linux/posix/exclusive_rename.h"

namespace quoll::share {

using foundation::Error;
using foundation::NSURL;

std::optional<Error> MovingFiles::copyItemAtPath(std::string_view source,
                                                 std::string_view destination) {
  const bool is_moved =
      is_prepared(source) && posix::rename_exclusively(AT_FDCWD, std::string(source), AT_FDCWD,
                                                       std::string(destination)) == 0;
  // Whatever was wrong, a copy meets it again and tells, unless it helps.
  return is_moved ? std::nullopt : files_->copyItemAtPath(source, destination);
}

std::shared_ptr<NSURL> MovingFiles::containerURLForSecurityApplicationGroupIdentifier(
    std::string_view group) {
  return files_->containerURLForSecurityApplicationGroupIdentifier(group);
}

std::optional<Error> MovingFiles::removeItemAtURL(const std::shared_ptr<NSURL>& url) {
  return files_->removeItemAtURL(url);
}

std::optional<Error> MovingFiles::createDirectoryAtURL(const std::shared_ptr<NSURL>& url) {
  return files_->createDirectoryAtURL(url);
}

bool MovingFiles::fileExistsAtPath(std::string_view path) {
  return files_->fileExistsAtPath(path);
}

bool MovingFiles::isDirectoryAtPath(std::string_view path) {
  return files_->isDirectoryAtPath(path);
}

std::optional<std::vector<std::string>> MovingFiles::contentsOfDirectoryAtPath(
    std::string_view path) {
  return files_->contentsOfDirectoryAtPath(path);
}

platform::FileContents MovingFiles::contentsAtPath(std::string_view path) {
  return files_->contentsAtPath(path);
}

std::optional<Error> MovingFiles::writeToFile(const foundation::Bytes& data, std::string_view path,
                                              platform::NSDataWritingOptions options) {
  const std::string_view source(reinterpret_cast<const char*>(data.data()), data.size());
  return is_prepared(source) ? copyItemAtPath(source, path)
                             : files_->writeToFile(data, path, options);
}

std::string MovingFiles::currentDirectoryPath() {
  return files_->currentDirectoryPath();
}

}  // namespace quoll::share
