#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/platform/desktop.h"

namespace quoll::test {

/// Keeps every line that was logged.
class RecordingLog final : public platform::Log {
 public:
  void write(const platform::LogEvent& event) override;
  [[nodiscard]] std::vector<platform::LogEvent> events() const;
  /// Their texts alone.
  [[nodiscard]] std::vector<std::string> lines() const;

 private:
  mutable std::mutex mutex_;
  std::vector<platform::LogEvent> events_;
};

/// Opens nothing, keeps what was to be opened, and answers what it was told to.
class RecordingWorkspace final : public platform::NSWorkspace {
 public:
  struct Opened {
    std::vector<std::string> urls;
    std::string application;
    platform::NSWorkspaceLaunchOptions options{};
    friend bool operator==(const Opened&, const Opened&) = default;
  };

  explicit RecordingWorkspace(bool answer = true) : answer_(answer) {}

  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                std::string_view application, platform::NSWorkspaceLaunchOptions options) override;
  [[nodiscard]] std::vector<Opened> opened() const;

 private:
  bool answer_;
  mutable std::mutex mutex_;
  std::vector<Opened> opened_;
};

/// A clock that lets no time pass: it counts the sleeps and calls the test at each.
class HeldClock final : public platform::Clock {
 public:
  /// Called on the sleeping thread with the number of the sleep, from 1.
  explicit HeldClock(std::function<void(int sleep)> at_sleep = nullptr)
      : at_sleep_(std::move(at_sleep)) {}

  void sleep(double seconds) override;
  foundation::Date now() override { return {present}; }
  [[nodiscard]] std::vector<double> sleeps() const;

  /// What `now` answers, in seconds since 1970. Set it before threads start.
  double present = 0;

 private:
  std::function<void(int)> at_sleep_;
  mutable std::mutex mutex_;
  std::vector<double> sleeps_;
};

/// Runs blocks on threads of their own and joins them all when it goes, or when `wait` is called.
class ThreadQueue final : public platform::Queue {
 public:
  ~ThreadQueue() override { wait(); }
  void async(platform::QueuePriority priority, std::function<void()> block) override;
  /// Returns when every block has ended.
  void wait();
  [[nodiscard]] std::vector<platform::QueuePriority> priorities() const;

 private:
  mutable std::mutex mutex_;
  std::condition_variable ended_;
  int running_ = 0;
  std::vector<platform::QueuePriority> priorities_;
};

/// Keeps blocks until the test runs them, on the test's thread.
class HeldQueue final : public platform::Queue {
 public:
  void async(platform::QueuePriority priority, std::function<void()> block) override;
  /// Runs the blocks that are waiting, and those that they add, in order.
  void run();
  [[nodiscard]] std::vector<platform::QueuePriority> priorities() const { return priorities_; }

 private:
  std::vector<std::function<void()>> blocks_;
  std::vector<platform::QueuePriority> priorities_;
};

/// A bundle with an identifier (or none) and translations.
class FixedBundle final : public platform::NSBundle {
 public:
  explicit FixedBundle(std::optional<std::string> identifier,
                       std::map<std::string, std::string> translations = {})
      : identifier_(std::move(identifier)), translations_(std::move(translations)) {}

  [[nodiscard]] foundation::Dictionary infoDictionary() const override;
  [[nodiscard]] std::string localizedStringForKey(std::string_view key,
                                                  std::string_view value) const override;

 private:
  std::optional<std::string> identifier_;
  std::map<std::string, std::string> translations_;
};

}  // namespace quoll::test
