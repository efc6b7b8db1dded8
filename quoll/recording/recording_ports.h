#pragma once

#include <memory>
#include <utility>

#include "quoll/platform/desktop.h"
#include "quoll/platform/forwarding_files.h"

/// Ports that note in the recorder of the calling thread what they are asked, and then do what the
/// port beneath does. Without a recorder they only do that. What they wrap is never null.
namespace quoll::recording {

/// Records each log event.
class RecordingLog final : public platform::Log {
 public:
  explicit RecordingLog(std::shared_ptr<platform::Log> log) : log_(std::move(log)) {}
  void write(const platform::LogEvent& event) override;

 private:
  std::shared_ptr<platform::Log> log_;
};

/// Records each notification before its observers are called.
class RecordingNotifications final : public platform::NSNotificationCenter {
 public:
  explicit RecordingNotifications(std::shared_ptr<NSNotificationCenter> center)
      : center_(std::move(center)) {}
  void postNotificationName(std::string_view name, const foundation::Value& object) override;
  void addObserver(const void* observer, std::string_view name, const foundation::Value& object,
                   Block block) override;
  void removeObserver(const void* observer) override;

 private:
  std::shared_ptr<NSNotificationCenter> center_;
};

/// Records an `Opening` before the URLs are given away, and the answer once it is there.
class RecordingWorkspace final : public platform::NSWorkspace {
 public:
  explicit RecordingWorkspace(std::shared_ptr<NSWorkspace> workspace)
      : workspace_(std::move(workspace)) {}
  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                std::string_view application, platform::NSWorkspaceLaunchOptions options) override;

 private:
  std::shared_ptr<NSWorkspace> workspace_;
};

/// Carries the recorder of the thread that hands over a block along to the thread that runs it,
/// however late that is.
class RecordingQueue final : public platform::Queue {
 public:
  explicit RecordingQueue(std::shared_ptr<Queue> queue) : queue_(std::move(queue)) {}
  void async(platform::QueuePriority priority, std::function<void()> block) override;

 private:
  std::shared_ptr<Queue> queue_;
};

/// Records where each file was put, once it is there.
class RecordingFiles final : public platform::ForwardingFiles {
 public:
  using ForwardingFiles::ForwardingFiles;

  std::optional<foundation::Error> copyItemAtPath(std::string_view source,
                                                  std::string_view destination) override;
  std::optional<foundation::Error> writeToFile(const foundation::Bytes& data, std::string_view path,
                                               platform::NSDataWritingOptions options) override;
};

/// The same desktop with recording ports around its log, notifications, workspace, queue and files;
/// what is null stays null.
[[nodiscard]] platform::Desktop recorded(platform::Desktop desktop);

}  // namespace quoll::recording
