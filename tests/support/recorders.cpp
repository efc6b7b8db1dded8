#include "tests/support/recorders.h"

#include <thread>

#include "quoll/foundation/exception.h"

namespace quoll::test {

void RecordingLog::write(const platform::LogEvent& event) {
  const std::lock_guard lock(mutex_);
  events_.push_back(event);
}

std::vector<platform::LogEvent> RecordingLog::events() const {
  const std::lock_guard lock(mutex_);
  return events_;
}

std::vector<std::string> RecordingLog::lines() const {
  std::vector<std::string> lines;
  for (const auto& event : events()) {
    lines.push_back(event.text);
  }
  return lines;
}

bool RecordingWorkspace::openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                                  std::string_view application,
                                  platform::NSWorkspaceLaunchOptions options) {
  Opened opened{{}, std::string(application), options};
  for (const auto& url : urls) {
    opened.urls.push_back(url->absoluteString());
  }
  const std::lock_guard lock(mutex_);
  opened_.push_back(std::move(opened));
  return answer_;
}

std::vector<RecordingWorkspace::Opened> RecordingWorkspace::opened() const {
  const std::lock_guard lock(mutex_);
  return opened_;
}

void HeldClock::sleep(double seconds) {
  int number = 0;
  {
    const std::lock_guard lock(mutex_);
    sleeps_.push_back(seconds);
    number = static_cast<int>(sleeps_.size());
  }
  if (at_sleep_) {
    at_sleep_(number);
  }
}

std::vector<double> HeldClock::sleeps() const {
  const std::lock_guard lock(mutex_);
  return sleeps_;
}

void ThreadQueue::async(platform::QueuePriority priority, std::function<void()> block) {
  {
    const std::lock_guard lock(mutex_);
    priorities_.push_back(priority);
    ++running_;
  }
  std::thread([this, block = std::move(block)]() mutable {
    try {
      block();
    } catch (const foundation::NSException& exception) {
      platform::log("queue: %@", exception);
    }
    block = nullptr;
    const std::lock_guard lock(mutex_);
    --running_;
    ended_.notify_all();
  }).detach();
}

void ThreadQueue::wait() {
  std::unique_lock lock(mutex_);
  ended_.wait(lock, [&] { return running_ == 0; });
}

std::vector<platform::QueuePriority> ThreadQueue::priorities() const {
  const std::lock_guard lock(mutex_);
  return priorities_;
}

void HeldQueue::async(platform::QueuePriority priority, std::function<void()> block) {
  priorities_.push_back(priority);
  blocks_.push_back(std::move(block));
}

void HeldQueue::run() {
  for (std::size_t next = 0; next < blocks_.size(); ++next) {
    const auto block = std::move(blocks_[next]);
    block();
  }
  blocks_.clear();
}

foundation::Dictionary FixedBundle::infoDictionary() const {
  foundation::Dictionary info;
  if (identifier_) {
    info.setObject(*identifier_, "CFBundleIdentifier");
  }
  return info;
}

std::string FixedBundle::localizedStringForKey(std::string_view key, std::string_view value) const {
  const auto found = translations_.find(std::string(key));
  if (found != translations_.end()) {
    return found->second;
  }
  return std::string(key.empty() || value.empty() ? key : value);
}

}  // namespace quoll::test
