#include "tests/support/failing_files.h"

#include <utility>

namespace quoll::test {

using foundation::Bytes;
using foundation::Error;
using foundation::NSURL;

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
  if (at_call) {
    at_call(operation);
  }
  const std::lock_guard lock(mutex_);
  const auto found = failures_.find({operation, ++calls_[operation]});
  return found == failures_.end() ? std::nullopt : std::optional(found->second);
}

std::shared_ptr<NSURL> FailingFiles::containerURLForSecurityApplicationGroupIdentifier(
    std::string_view group) {
  return next(Operation::kContainer)
             ? nullptr
             : ForwardingFiles::containerURLForSecurityApplicationGroupIdentifier(group);
}

std::optional<Error> FailingFiles::removeItemAtURL(const std::shared_ptr<NSURL>& url) {
  const auto failure = next(Operation::kRemove);
  return failure ? failure : ForwardingFiles::removeItemAtURL(url);
}

std::optional<Error> FailingFiles::createDirectoryAtURL(const std::shared_ptr<NSURL>& url) {
  const auto failure = next(Operation::kCreateDirectory);
  return failure ? failure : ForwardingFiles::createDirectoryAtURL(url);
}

std::optional<Error> FailingFiles::copyItemAtPath(std::string_view source,
                                                  std::string_view destination) {
  const auto failure = next(Operation::kCopy);
  return failure ? failure : ForwardingFiles::copyItemAtPath(source, destination);
}

std::optional<std::vector<std::string>> FailingFiles::contentsOfDirectoryAtPath(
    std::string_view path) {
  return next(Operation::kList) ? std::nullopt : ForwardingFiles::contentsOfDirectoryAtPath(path);
}

platform::FileContents FailingFiles::contentsAtPath(std::string_view path) {
  {
    const std::lock_guard lock(mutex_);
    read_.emplace_back(path);
  }
  const auto failure = next(Operation::kRead);
  return failure ? platform::FileContents(*failure) : ForwardingFiles::contentsAtPath(path);
}

std::optional<Error> FailingFiles::writeToFile(const Bytes& data, std::string_view path,
                                               platform::NSDataWritingOptions options) {
  write_options = options;
  const auto failure = next(Operation::kWrite);
  return failure ? failure : ForwardingFiles::writeToFile(data, path, options);
}

}  // namespace quoll::test
