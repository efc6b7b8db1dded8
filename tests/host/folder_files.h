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
  bool removeItemAtURL(const std::shared_ptr<foundation::NSURL>& url,
                       std::optional<foundation::Error>& error) override {
    const std::string path = url->file_system_path().value_or("");
    if (std::filesystem::remove_all(path) > 0) {
      return true;
    }
    error = foundation::file_error(ENOENT, path, true);
    return false;
  }
  bool createDirectoryAtURL(const std::shared_ptr<foundation::NSURL>& url,
                            std::optional<foundation::Error>& /*error*/) override {
    std::filesystem::create_directories(url->file_system_path().value_or(""));
    return true;
  }
  bool copyItemAtPath(std::string_view source, std::string_view destination,
                      std::optional<foundation::Error>& error) override {
    std::error_code failure;
    if (std::filesystem::copy_file(source, destination, failure)) {
      return true;
    }
    error = foundation::file_error(failure.value(), source, true);
    return false;
  }
  bool fileExistsAtPath(std::string_view path, bool* /*is_directory*/) override {
    return std::filesystem::exists(path);
  }
  std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(
      std::string_view /*path*/) override {
    return std::nullopt;
  }
  std::optional<foundation::Bytes> contentsAtPath(
      std::string_view /*path*/, std::optional<foundation::Error>& /*error*/) override {
    return std::nullopt;
  }
  bool writeToFile(const foundation::Bytes& /*data*/, std::string_view path, unsigned /*options*/,
                   std::optional<foundation::Error>& error) override {
    error = foundation::file_error(ENOSPC, path, true);
    return false;
  }
  std::string currentDirectoryPath() override { return std::filesystem::current_path(); }

 private:
  std::string container_;
};

}  // namespace quoll::test
