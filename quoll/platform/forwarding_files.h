#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quoll/platform/files.h"

namespace quoll::platform {

/// Does what another file manager does, which it shares: a base for those that change a few
/// operations. Any thread may call.
class ForwardingFiles : public NSFileManager {
 public:
  /// `files` is not null.
  explicit ForwardingFiles(std::shared_ptr<NSFileManager> files) : files_(std::move(files)) {}

  std::shared_ptr<foundation::NSURL> containerURLForSecurityApplicationGroupIdentifier(
      std::string_view group) override {
    return files_->containerURLForSecurityApplicationGroupIdentifier(group);
  }
  std::optional<foundation::Error> removeItemAtURL(
      const std::shared_ptr<foundation::NSURL>& url) override {
    return files_->removeItemAtURL(url);
  }
  std::optional<foundation::Error> createDirectoryAtURL(
      const std::shared_ptr<foundation::NSURL>& url) override {
    return files_->createDirectoryAtURL(url);
  }
  std::optional<foundation::Error> copyItemAtPath(std::string_view source,
                                                  std::string_view destination) override {
    return files_->copyItemAtPath(source, destination);
  }
  bool fileExistsAtPath(std::string_view path) override { return files_->fileExistsAtPath(path); }
  bool isDirectoryAtPath(std::string_view path) override { return files_->isDirectoryAtPath(path); }
  std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(
      std::string_view path) override {
    return files_->contentsOfDirectoryAtPath(path);
  }
  FileContents contentsAtPath(std::string_view path) override {
    return files_->contentsAtPath(path);
  }
  std::optional<foundation::Error> writeToFile(const foundation::Bytes& data, std::string_view path,
                                               NSDataWritingOptions options) override {
    return files_->writeToFile(data, path, options);
  }
  std::string currentDirectoryPath() override { return files_->currentDirectoryPath(); }

 private:
  std::shared_ptr<NSFileManager> files_;
};

}  // namespace quoll::platform
