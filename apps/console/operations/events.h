#pragma once

#include <memory>
#include <mutex>
#include <string_view>

#include "apps/console/operations/json.h"
#include "quoll/platform/desktop.h"

/// What happens while a request runs, gathered for its reply.
///
/// Work that a request starts on other threads belongs to that request, however late it runs: a
/// block carries its request along through the queue. Once the reply is written, what its late
/// blocks still cause goes to the log and the workspace as ever, and into no reply.
namespace quoll::console {

/// The events of one request, in order. Any thread may add.
class Events final {
 public:
  void add(Json event);
  /// What happened so far; later additions are dropped.
  [[nodiscard]] Json close();

 private:
  std::mutex mutex_;
  Json events_ = Json::array();
  bool closed_ = false;
};

/// The request that this thread works for, null when it works for none.
[[nodiscard]] std::shared_ptr<Events> current_events();

/// Lets this thread work for a request as long as it lives.
class Attribution final {
 public:
  explicit Attribution(std::shared_ptr<Events> events);
  Attribution(const Attribution&) = delete;
  Attribution& operator=(const Attribution&) = delete;
  ~Attribution();

 private:
  std::shared_ptr<Events> before_;
};

/// The desktop whose log, notifications, workspace and queue tell the events of requests, and do
/// what those of `desktop` do. `desktop` has no null in it.
[[nodiscard]] platform::Desktop watched(platform::Desktop desktop);

/// A workspace that opens nothing and answers true.
[[nodiscard]] std::shared_ptr<platform::NSWorkspace> make_recording_workspace();

}  // namespace quoll::console
