#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "apps/share/counting_queue.h"
#include "apps/share/host_context.h"
#include "apps/share/request/select.h"
#include "quoll/recording/event_recorder.h"
#include "quoll/view/view_controller.h"

namespace quoll::share {

/// The selection as one request with one extension item. HTML is read here, since only a confined
/// process should; what cannot be read is left out.
[[nodiscard]] std::shared_ptr<HostContext> make_request(Selection& selection);

/// Told how many of the items have answered, again and again while the share is under way.
using Progress = std::function<void(std::size_t answered, std::size_t items)>;

/// Returns when no background block is left. Without a `progress` it tells a person at a terminal
/// how far the share is, once that has taken a second.
void wait_until_done(const Selection& selection, CountingQueue& background,
                     const Progress& progress = nullptr);

/// What came of a share.
struct Outcome {
  std::shared_ptr<HostContext> request;
  /// What was seen from asking for the view to the end of the background work, apart from what the
  /// items have seen.
  std::vector<recording::Event> events;
};

/// Shares the selection by an extension's view controller, as a share menu would: hands it the
/// request, asks for its view on this thread, and stays until its background work has ended.
template <std::derived_from<platform::NSViewController> Controller>
[[nodiscard]] Outcome run(Selection& selection, CountingQueue& background,
                          const Progress& progress = nullptr) {
  Outcome outcome{.request = make_request(selection), .events = {}};
  if (selection.empty()) {
    return outcome;
  }
  Controller controller;
  controller.set_extension_context(outcome.request);
  const auto recorder = std::make_shared<recording::EventRecorder>();
  {
    const recording::EventRecorder::Scope scope(recorder);
    controller.view();
  }
  wait_until_done(selection, background, progress);
  outcome.events = recorder->close();
  return outcome;
}

}  // namespace quoll::share
