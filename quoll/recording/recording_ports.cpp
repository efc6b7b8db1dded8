#include "quoll/recording/recording_ports.h"

#include "quoll/recording/event_recorder.h"

namespace quoll::recording {

using foundation::Bytes;
using foundation::Error;
using foundation::NSURL;

namespace {

/// Records a file that was written, unless that failed.
std::optional<Error> recorded_unless(std::optional<Error> error, std::string_view path) {
  if (!error) {
    record(WrittenFile{std::string(path)});
  }
  return error;
}

template <typename Recording, typename Port>
void wrap(std::shared_ptr<Port>& port) {
  if (port) {
    port = std::make_shared<Recording>(std::move(port));
  }
}

}  // namespace

void RecordingLog::write(const platform::LogEvent& event) {
  record(event);
  log_->write(event);
}

void RecordingNotifications::postNotificationName(std::string_view name,
                                                  const foundation::Value& object) {
  record(Notification{std::string(name), object});
  center_->postNotificationName(name, object);
}

void RecordingNotifications::addObserver(const void* observer, std::string_view name,
                                         const foundation::Value& object, Block block) {
  center_->addObserver(observer, name, object, std::move(block));
}

void RecordingNotifications::removeObserver(const void* observer) {
  center_->removeObserver(observer);
}

bool RecordingWorkspace::openURLs(const std::vector<std::shared_ptr<NSURL>>& urls,
                                  std::string_view application,
                                  platform::NSWorkspaceLaunchOptions options) {
  record(Opening{urls, std::string(application), options});
  const bool is_opened = workspace_->openURLs(urls, application, options);
  record(OpeningAnswer{is_opened});
  return is_opened;
}

void RecordingQueue::async(platform::QueuePriority priority, std::function<void()> block) {
  queue_->async(priority, [recorder = EventRecorder::current(), block = std::move(block)] {
    const EventRecorder::Scope scope(recorder);
    platform::run_block(block);
  });
}

std::optional<Error> RecordingFiles::copyItemAtPath(std::string_view source,
                                                    std::string_view destination) {
  return recorded_unless(ForwardingFiles::copyItemAtPath(source, destination), destination);
}

std::optional<Error> RecordingFiles::writeToFile(const Bytes& data, std::string_view path,
                                                 platform::NSDataWritingOptions options) {
  return recorded_unless(ForwardingFiles::writeToFile(data, path, options), path);
}

platform::Desktop recorded(platform::Desktop desktop) {
  wrap<RecordingLog>(desktop.log);
  wrap<RecordingNotifications>(desktop.notifications);
  wrap<RecordingWorkspace>(desktop.workspace);
  wrap<RecordingQueue>(desktop.queue);
  wrap<RecordingFiles>(desktop.files);
  return desktop;
}

}  // namespace quoll::recording
