#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/platform/files.h"

namespace quoll::test {

/// A file system in memory, with folders and files and no links. The folders "/" and "/home" are
/// there, group containers lie in "/containers"; the working directory is "/home".
class MemoryFiles final : public platform::NSFileManager {
 public:
  MemoryFiles();

  std::shared_ptr<foundation::NSURL> containerURLForSecurityApplicationGroupIdentifier(
      std::string_view group) override;
  std::optional<foundation::Error> removeItemAtURL(
      const std::shared_ptr<foundation::NSURL>& url) override;
  std::optional<foundation::Error> createDirectoryAtURL(
      const std::shared_ptr<foundation::NSURL>& url) override;
  std::optional<foundation::Error> copyItemAtPath(std::string_view source,
                                                  std::string_view destination) override;
  bool fileExistsAtPath(std::string_view path) override;
  bool isDirectoryAtPath(std::string_view path) override;
  std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(std::string_view path) override;
  platform::FileContents contentsAtPath(std::string_view path) override;
  std::optional<foundation::Error> writeToFile(const foundation::Bytes& data, std::string_view path,
                                               platform::NSDataWritingOptions options) override;
  std::string currentDirectoryPath() override { return "/home"; }

 private:
  /// A folder has no bytes.
  using Node = std::optional<foundation::Bytes>;
  using Nodes = std::map<std::string, Node, std::less<>>;

  int make_folders(const std::string& path);
  /// The entry at a path and all below it.
  [[nodiscard]] std::vector<std::string> tree(const std::string& path) const;
  /// 0 when something can be put at that path, else an `errno` value.
  [[nodiscard]] int check_parent(const std::string& path) const;

  std::mutex mutex_;
  Nodes nodes_;
};

}  // namespace quoll::test
