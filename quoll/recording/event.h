#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "quoll/foundation/nsurl.h"
#include "quoll/foundation/value.h"
#include "quoll/platform/log.h"
#include "quoll/platform/workspace.h"

namespace quoll::recording {

/// A notification that is posted.
struct Notification {
  std::string name;
  foundation::Value object;
};

/// URLs that are given to the workspace, as it got them.
struct Opening {
  std::vector<std::shared_ptr<foundation::NSURL>> urls;
  std::string application;
  platform::NSWorkspaceLaunchOptions options{};
};

/// What the workspace answered to the `Opening` before it.
struct OpeningAnswer {
  bool is_opened = false;
};

/// A file that was written or copied as a whole.
struct WrittenFile {
  std::string path;
};

/// What a program does that can be noticed outside it.
using Event = std::variant<platform::LogEvent, Notification, Opening, OpeningAnswer, WrittenFile>;

/// The events of one kind, in order.
template <typename Kind>
[[nodiscard]] std::vector<Kind> events_of_kind(const std::vector<Event>& events) {
  std::vector<Kind> found;
  for (const Event& event : events) {
    if (const Kind* const one = std::get_if<Kind>(&event)) {
      found.push_back(*one);
    }
  }
  return found;
}

}  // namespace quoll::recording
