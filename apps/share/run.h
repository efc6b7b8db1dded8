#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "apps/share/host_context.h"
#include "apps/share/request/select.h"
#include "apps/share/watched_queue.h"
#include "apps/share/witness.h"
#include "quoll/view/view_controller.h"

namespace quoll::share {

/// The selection as one request with one extension item. HTML is read here, since only a confined
/// process should; what cannot be read is left out.
[[nodiscard]] std::shared_ptr<HostContext> make_request(Selection& selection);

/// Told how many of the items have answered, again and again while the share is under way.
using Progress = std::function<void(std::size_t answered, std::size_t items)>;

/// Returns when no background block is left. Without a `progress` it tells a person at a terminal
/// how far the share is, once that has taken a second.
void wait_until_done(const Selection& selection, WatchedQueue& background,
                     const Progress& progress = nullptr);

/// What came of a share, besides what the workspace and the items know.
struct Outcome {
  std::shared_ptr<HostContext> request;
  /// What was logged while the view was asked for: the staging folder was prepared then.
  std::vector<platform::LogEvent> preparation;
  /// What was logged on the background queue, the items and the launch aside.
  std::vector<platform::LogEvent> background;
};

/// Shares the selection by an extension's view controller, as a share menu would: hands it the
/// request, asks for its view on this thread, and stays until its background work has ended.
template <std::derived_from<platform::NSViewController> Controller>
[[nodiscard]] Outcome run(Selection& selection, WatchedQueue& background,
                          const Progress& progress = nullptr) {
  Outcome outcome{.request = make_request(selection), .preparation = {}, .background = {}};
  if (selection.empty()) {
    return outcome;
  }
  Controller controller;
  controller.set_extension_context(outcome.request);
  Witness preparation;
  {
    const Witness::Scope scope(preparation);
    controller.view();
  }
  wait_until_done(selection, background, progress);
  outcome.preparation = preparation.logged();
  outcome.background = background.witness().logged();
  return outcome;
}

}  // namespace quoll::share
