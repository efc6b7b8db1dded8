#include "apps/share/steps.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>
#include <utility>

#include "quoll/foundation/printable.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {

namespace {

class TellingLog final : public platform::Log {
 public:
  TellingLog(std::shared_ptr<platform::Log> log, std::shared_ptr<const Steps> steps)
      : log_(std::move(log)), steps_(std::move(steps)) {}

  void write(const platform::LogEvent& event) override {
    steps_->tell(event.text);
    log_->write(event);
  }

 private:
  std::shared_ptr<platform::Log> log_;
  std::shared_ptr<const Steps> steps_;
};

class TellingWorkspace final : public platform::NSWorkspace {
 public:
  TellingWorkspace(std::shared_ptr<NSWorkspace> workspace, std::shared_ptr<const Steps> steps)
      : workspace_(std::move(workspace)), steps_(std::move(steps)) {}

  bool openURLs(const std::vector<std::shared_ptr<foundation::NSURL>>& urls,
                std::string_view application, platform::NSWorkspaceLaunchOptions options) override {
    const std::string name(application);
    steps_->tell("all is ready and goes to " + name);
    const bool is_opened = workspace_->openURLs(urls, application, options);
    steps_->tell(name + (is_opened ? " has taken it" : " has not taken it"));
    return is_opened;
  }

 private:
  std::shared_ptr<NSWorkspace> workspace_;
  std::shared_ptr<const Steps> steps_;
};

}  // namespace

void Steps::tell(std::string_view step) const {
  if (!are_told_) {
    return;
  }
  constexpr double kMillisecondsInASecond = 1000;
  std::array<char, 32> time{};
  static_cast<void>(std::snprintf(time.data(), time.size(), "[%8.3f] ",
                                  static_cast<double>(elapsed().count()) / kMillisecondsInASecond));
  // One write a line, so that the lines of several threads do not mix.
  static_cast<void>(
      posix::write_all(STDERR_FILENO, time.data() + foundation::printable(step) + "\n"));
}

std::chrono::milliseconds Steps::elapsed() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                               begin_);
}

std::shared_ptr<platform::Log> make_telling_log(std::shared_ptr<platform::Log> log,
                                                std::shared_ptr<const Steps> steps) {
  return std::make_shared<TellingLog>(std::move(log), std::move(steps));
}

std::shared_ptr<platform::NSWorkspace> make_telling_workspace(
    std::shared_ptr<platform::NSWorkspace> workspace, std::shared_ptr<const Steps> steps) {
  return std::make_shared<TellingWorkspace>(std::move(workspace), std::move(steps));
}

}  // namespace quoll::share
