#include "quoll/platform/desktop.h"

#include <mutex>
#include <utility>

namespace quoll::platform {

namespace {

struct Installed {
  std::mutex mutex;
  std::shared_ptr<const Desktop> desktop = std::make_shared<const Desktop>(empty_desktop());
};

Installed& installed() {
  // Never destroyed: a load handler that answers late may still ask while the program exits.
  static auto* const holder = new Installed;
  return *holder;
}

template <typename Port>
void fill(Port& port, Port fallback) {
  if (!port) {
    port = std::move(fallback);
  }
}

}  // namespace

Desktop install(Desktop desktop) {
  Desktop nothing = empty_desktop();
  fill(desktop.bundle, std::move(nothing.bundle));
  fill(desktop.files, std::move(nothing.files));
  fill(desktop.coordinator, std::move(nothing.coordinator));
  fill(desktop.workspace, std::move(nothing.workspace));
  fill(desktop.notifications, std::move(nothing.notifications));
  fill(desktop.log, std::move(nothing.log));
  fill(desktop.queue, std::move(nothing.queue));
  fill(desktop.clock, std::move(nothing.clock));
  fill(desktop.images, std::move(nothing.images));
  fill(desktop.styled_text, std::move(nothing.styled_text));
  fill(desktop.dates, std::move(nothing.dates));
  fill(desktop.links, std::move(nothing.links));
  auto next = std::make_shared<const Desktop>(std::move(desktop));
  const std::lock_guard lock(installed().mutex);
  std::swap(installed().desktop, next);
  return *next;
}

std::shared_ptr<const Desktop> current_desktop() {
  const std::lock_guard lock(installed().mutex);
  return installed().desktop;
}

std::shared_ptr<NSBundle> NSBundle::mainBundle() {
  return current_desktop()->bundle;
}

foundation::Value main_bundle_identifier() {
  return NSBundle::mainBundle()->infoDictionary().objectForKey("CFBundleIdentifier");
}

std::shared_ptr<NSFileManager> NSFileManager::defaultManager() {
  return current_desktop()->files;
}

std::unique_ptr<NSFileCoordinator> NSFileCoordinator::create() {
  return current_desktop()->coordinator();
}

std::shared_ptr<NSWorkspace> NSWorkspace::sharedWorkspace() {
  return current_desktop()->workspace;
}

std::shared_ptr<NSNotificationCenter> NSNotificationCenter::defaultCenter() {
  return current_desktop()->notifications;
}

void log_event(const LogEvent& event) {
  current_desktop()->log->write(event);
}

void log_line(std::string_view text) {
  log_event({std::string(text)});
}

void log_reason(std::string_view operation, const foundation::Error& error) {
  log_event({std::string(operation).append(" ").append(error.text), error});
}

void dispatch_async(QueuePriority priority, std::function<void()> block) {
  current_desktop()->queue->async(priority, std::move(block));
}

foundation::Date present_moment() {
  return current_desktop()->clock->now();
}

void sleep_for_time_interval(double seconds) {
  current_desktop()->clock->sleep(seconds);
}

}  // namespace quoll::platform
