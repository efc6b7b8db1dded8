#pragma once

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/platform/files.h"

namespace quoll::test {

/// A file system with a group container in a given folder and no more than a share asks of it.
class FolderFiles final : public platform::NSFileManager {
 public:
  explicit FolderFiles(std::string container) : container_(std::move(container)) {}

  std::shared_ptr<foundation::NSURL> containerURLForSecurityApplicationGroupIdentifier(
      std::string_view /*group*/) override {
    return foundation::NSURL::file_url(container_, true);
  }
  std::optional<foundation::Error> removeItemAtURL(
      const std::shared_ptr<foundation::NSURL>& url) override {
    const std::string path = foundation::file_system_path(url).value_or("");
    return std::filesystem::remove_all(path) > 0
               ? std::nullopt
               : std::optional(foundation::file_error(ENOENT, path, true));
  }
  std::optional<foundation::Error> createDirectoryAtURL(
      const std::shared_ptr<foundation::NSURL>& url) override {
    std::filesystem::create_directories(foundation::file_system_path(url).value_or(""));
    return std::nullopt;
  }
  std::optional<foundation::Error> copyItemAtPath(std::string_view source,
                                                  std::string_view destination) override {
    std::error_code failure;
    return std::filesystem::copy_file(source, destination, failure)
               ? std::nullopt
               : std::optional(foundation::file_error(failure.value(), source, true));
  }
  bool fileExistsAtPath(std::string_view path) override { return std::filesystem::exists(path); }
  bool isDirectoryAtPath(std::string_view path) override {
    return std::filesystem::is_directory(path);
  }
  std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(
      std::string_view /*path*/) override {
    return std::nullopt;
  }
  platform::FileContents contentsAtPath(std::string_view path) override {
    return foundation::file_error(ENOENT, path, false);
  }
  std::optional<foundation::Error> writeToFile(
      const foundation::Bytes& /*data*/, std::string_view path,
      platform::NSDataWritingOptions /*options*/) override {
    return foundation::file_error(ENOSPC, path, true);
  }
  std::string currentDirectoryPath() override { return std::filesystem::current_path(); }

 private:
  std::string container_;
};

}  // namespace quoll::test
