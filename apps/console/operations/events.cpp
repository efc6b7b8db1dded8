#include "apps/console/operations/events.h"

#include <utility>
#include <vector>

#include "apps/console/operations/write_value.h"

namespace quoll::console {

namespace {

std::shared_ptr<Events>& thread_events() {
  thread_local std::shared_ptr<Events> events;
  return events;
}

void tell(Json event) {
  if (const auto& events = thread_events()) {
    events->add(std::move(event));
  }
}

class WatchedLog final : public platform::Log {
 public:
  explicit WatchedLog(std::shared_ptr<platform::Log> log) : log_(std::move(log)) {}
  void write(const platform::LogEvent& event) override {
    tell({{"log", json_text(event.text)}});
    log_->write(event);
  }

 private:
  std::shared_ptr<platform::Log> log_;
};

class WatchedNotifications final : public platform::NSNotificationCenter {
 public:
  explicit WatchedNotifications(std::shared_ptr<NSNotificationCenter> center)
      : center_(std::move(center)) {}
  void postNotificationName(std::string_view name, const foundation::Value& object) override {
    tell({{"posted", name}, {"object", write_value(object)}});
    center_->postNotificationName(name, object);
  }
  void addObserver(const void* observer, std::string_view name, const foundation::Value& object,
                   Block block) override {
    center_->addObserver(observer, name, object, std::move(block));
  }
  void removeObserver(const void* observer) override { center_->removeObserver(observer); }

 private:
  std::shared_ptr<NSNotificationCenter> center_;
};

class WatchedWorkspace final : public platform::NSWorkspace {
 public:
  explicit WatchedWorkspace(std::shared_ptr<NSWorkspace> workspace)
      : workspace_(std::move(workspace)) {}
  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                std::string_view application, unsigned options) override {
    Json texts = Json::array();
    for (const auto& url : urls) {
      texts.push_back(url ? Json(url->absoluteString()) : Json());
    }
    tell({{"opened", std::move(texts)}, {"application", application}, {"options", options}});
    return workspace_->openURLs(urls, application, options);
  }

 private:
  std::shared_ptr<NSWorkspace> workspace_;
};

class WatchedQueue final : public platform::Queue {
 public:
  explicit WatchedQueue(std::shared_ptr<platform::Queue> queue) : queue_(std::move(queue)) {}
  void async(platform::QueuePriority priority, std::function<void()> block) override {
    queue_->async(priority, [events = current_events(), block = std::move(block)] {
      const Attribution attribution(events);
      platform::run_block(block);
    });
  }

 private:
  std::shared_ptr<platform::Queue> queue_;
};

class RecordingWorkspace final : public platform::NSWorkspace {
 public:
  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& /*urls*/,
                std::string_view /*application*/, unsigned /*options*/) override {
    return true;
  }
};

}  // namespace

void Events::add(Json event) {
  const std::lock_guard lock(mutex_);
  if (!closed_) {
    events_.push_back(std::move(event));
  }
}

Json Events::close() {
  const std::lock_guard lock(mutex_);
  closed_ = true;
  return std::move(events_);
}

std::shared_ptr<Events> current_events() {
  return thread_events();
}

Attribution::Attribution(std::shared_ptr<Events> events)
    : before_(std::exchange(thread_events(), std::move(events))) {}

Attribution::~Attribution() {
  thread_events() = std::move(before_);
}

platform::Desktop watched(platform::Desktop desktop) {
  desktop.log = std::make_shared<WatchedLog>(std::move(desktop.log));
  desktop.notifications = std::make_shared<WatchedNotifications>(std::move(desktop.notifications));
  desktop.workspace = std::make_shared<WatchedWorkspace>(std::move(desktop.workspace));
  desktop.queue = std::make_shared<WatchedQueue>(std::move(desktop.queue));
  return desktop;
}

std::shared_ptr<platform::NSWorkspace> make_recording_workspace() {
  return std::make_shared<RecordingWorkspace>();
}

}  // namespace quoll::console
