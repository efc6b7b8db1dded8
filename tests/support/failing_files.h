#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/platform/forwarding_files.h"

namespace quoll::test {

/// Another file manager whose calls fail where the test says so. A call that fails touches nothing.
/// Any thread may call.
class FailingFiles final : public platform::ForwardingFiles {
 public:
  enum class Operation { kContainer, kRemove, kCreateDirectory, kCopy, kList, kRead, kWrite };

  using ForwardingFiles::ForwardingFiles;

  /// Lets the `nth` call of an operation from now on, counted from 1, fail with that error (an
  /// operation without errors then answers nothing).
  void fail(Operation operation, int nth, foundation::Error error);
  /// How often an operation was called.
  [[nodiscard]] int calls(Operation operation) const;
  /// The files that were asked for their contents, in order.
  [[nodiscard]] std::vector<std::string> read() const;

  std::shared_ptr<foundation::NSURL> containerURLForSecurityApplicationGroupIdentifier(
      std::string_view group) override;
  std::optional<foundation::Error> removeItemAtURL(
      const std::shared_ptr<foundation::NSURL>& url) override;
  std::optional<foundation::Error> createDirectoryAtURL(
      const std::shared_ptr<foundation::NSURL>& url) override;
  std::optional<foundation::Error> copyItemAtPath(std::string_view source,
                                                  std::string_view destination) override;
  std::optional<std::vector<std::string>> contentsOfDirectoryAtPath(std::string_view path) override;
  platform::FileContents contentsAtPath(std::string_view path) override;
  std::optional<foundation::Error> writeToFile(const foundation::Bytes& data, std::string_view path,
                                               platform::NSDataWritingOptions options) override;

  /// Told of each call before it is made, on the calling thread. Set it before threads start.
  std::function<void(Operation)> at_call;
  /// The options of the last write.
  std::atomic<platform::NSDataWritingOptions> write_options{};

 private:
  /// Counts a call; the error with which it is to fail.
  std::optional<foundation::Error> next(Operation operation);

  mutable std::mutex mutex_;
  std::map<Operation, int> calls_;
  std::vector<std::string> read_;
  std::map<std::pair<Operation, int>, foundation::Error> failures_;
};

}  // namespace quoll::test
