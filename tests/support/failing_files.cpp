#include "tests/support/failing_files.h"

#include <utility>

namespace quoll::test {

namespace {

using foundation::Bytes;
using foundation::Error;
using foundation::NSURL;

/// Moves a failure into the caller's error; false when there is none.
bool fails(std::optional<Error> failure, std::optional<Error>& error) {
  if (failure) {
    error = std::move(failure);
    return true;
  }
  return false;
}

}  // namespace

void FailingFiles::fail(Operation operation, int nth, Error error) {
  const std::lock_guard lock(mutex_);
  failures_.insert_or_assign({operation, calls_[operation] + nth}, std::move(error));
}

int FailingFiles::calls(Operation operation) const {
  const std::lock_guard lock(mutex_);
  const auto found = calls_.find(operation);
  return found == calls_.end() ? 0 : found->second;
}

std::vector<std::string> FailingFiles::read() const {
  const std::lock_guard lock(mutex_);
  return read_;
}

std::optional<Error> FailingFiles::next(Operation operation) {
  const std::lock_guard lock(mutex_);
  const auto found = failures_.find({operation, ++calls_[operation]});
  return found == failures_.end() ? std::nullopt : std::optional(found->second);
}

std::shared_ptr<NSURL> FailingFiles::containerURLForSecurityApplicationGroupIdentifier(
    std::string_view group) {
  return next(Operation::kContainer)
             ? nullptr
             : inner_->containerURLForSecurityApplicationGroupIdentifier(group);
}

bool FailingFiles::removeItemAtURL(const std::shared_ptr<NSURL>& url, std::optional<Error>& error) {
  return !fails(next(Operation::kRemove), error) && inner_->removeItemAtURL(url, error);
}

bool FailingFiles::createDirectoryAtURL(const std::shared_ptr<NSURL>& url,
                                        std::optional<Error>& error) {
  return !fails(next(Operation::kCreateDirectory), error) &&
         inner_->createDirectoryAtURL(url, error);
}

bool FailingFiles::copyItemAtPath(std::string_view source, std::string_view destination,
                                  std::optional<Error>& error) {
  return !fails(next(Operation::kCopy), error) &&
         inner_->copyItemAtPath(source, destination, error);
}

bool FailingFiles::fileExistsAtPath(std::string_view path, bool* is_directory) {
  return inner_->fileExistsAtPath(path, is_directory);
}

std::optional<std::vector<std::string>> FailingFiles::contentsOfDirectoryAtPath(
    std::string_view path) {
  return next(Operation::kList) ? std::nullopt : inner_->contentsOfDirectoryAtPath(path);
}

std::optional<Bytes> FailingFiles::contentsAtPath(std::string_view path,
                                                  std::optional<Error>& error) {
  {
    const std::lock_guard lock(mutex_);
    read_.emplace_back(path);
  }
  return fails(next(Operation::kRead), error) ? std::nullopt : inner_->contentsAtPath(path, error);
}

bool FailingFiles::writeToFile(const Bytes& data, std::string_view path, unsigned options,
                               std::optional<Error>& error) {
  write_options = options;
  return !fails(next(Operation::kWrite), error) && inner_->writeToFile(data, path, options, error);
}

}  // namespace quoll::test
