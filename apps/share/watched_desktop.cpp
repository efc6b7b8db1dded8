#include "apps/share/watched_desktop.h"

#include <unistd.h>

#include <utility>

#include "apps/share/witness.h"
#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {

namespace {

using foundation::Bytes;
using foundation::Error;
using foundation::NSURL;

class WatchedLog final : public platform::Log {
 public:
  WatchedLog(std::shared_ptr<platform::Log> log, bool aloud)
      : log_(std::move(log)), aloud_(aloud) {}

  void write(const platform::LogEvent& event) override {
    if (Witness* const witness = Witness::current()) {
      witness->saw(event);
    }
    if (aloud_) {
      // One write a line, so that the lines of several threads do not mix. Who does not listen at
      // the other end has the system log.
      static_cast<void>(posix::write_all(STDERR_FILENO, foundation::printable(event.text) + "\n"));
    }
    log_->write(event);
  }

 private:
  std::shared_ptr<platform::Log> log_;
  bool aloud_;
};

class WatchedFiles final : public platform::NSFileManager {
 public:
  explicit WatchedFiles(std::shared_ptr<platform::NSFileManager> files)
      : files_(std::move(files)) {}

  std::shared_ptr<NSURL> containerURLForSecurityApplicationGroupIdentifier(
      std::string_view group) override {
    return files_->containerURLForSecurityApplicationGroupIdentifier(group);
  }
  bool removeItemAtURL(const std::shared_ptr<NSURL>& url, std::optional<Error>& error) override {
    return files_->removeItemAtURL(url, error);
  }
  bool createDirectoryAtURL(const std::shared_ptr<NSURL>& url,
                            std::optional<Error>& error) override {
    return files_->createDirectoryAtURL(url, error);
  }
  bool copyItemAtPath(std::string_view source, std::string_view destination,
                      std::optional<Error>& error) override {
    return seen(files_->copyItemAtPath(source, destination, error), destination);
  }
  bool fileExistsAtPath(std::string_view path, bool* is_directory) override {
    return files_->fileExistsAtPath(path, is_directory);
  }
  std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(
      std::string_view path) override {
    return files_->contentsOfDirectoryAtPath(path);
  }
  std::optional<Bytes> contentsAtPath(std::string_view path, std::optional<Error>& error) override {
    return files_->contentsAtPath(path, error);
  }
  bool writeToFile(const Bytes& data, std::string_view path, unsigned options,
                   std::optional<Error>& error) override {
    return seen(files_->writeToFile(data, path, options, error), path);
  }
  std::string currentDirectoryPath() override { return files_->currentDirectoryPath(); }

 private:
  static bool seen(bool is_written, std::string_view path) {
    Witness* const witness = Witness::current();
    if (is_written && witness != nullptr) {
      witness->saw_file(path);
    }
    return is_written;
  }

  std::shared_ptr<platform::NSFileManager> files_;
};

}  // namespace

std::shared_ptr<platform::Log> watched_log(std::shared_ptr<platform::Log> log, bool aloud) {
  return std::make_shared<WatchedLog>(std::move(log), aloud);
}

std::shared_ptr<platform::NSFileManager> watched_files(
    std::shared_ptr<platform::NSFileManager> files) {
  return std::make_shared<WatchedFiles>(std::move(files));
}

}  // namespace quoll::share
