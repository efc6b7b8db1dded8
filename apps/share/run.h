#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "apps/share/counting_queue.h"
#include "apps/share/request/selection.h"
#include "quoll/platform/extension_host.h"
#include "quoll/recording/event_recorder.h"
#include "quoll/view/view_controller.h"

namespace quoll::share {

/// The selection as the extension gets it: a context with one extension item. HTML is read here,
/// because the process is confined by now; HTML that cannot be read is moved to `left_out`. The
/// context ignores how the extension ends its request: a share ends with its background work.
[[nodiscard]] std::shared_ptr<platform::NSExtensionContext> make_context(Selection& selection);

/// Called about ten times a second while the share is under way, with how many steps are done and
/// how many there are: one for each item.
using Progress = std::function<void(std::size_t done, std::size_t steps)>;

/// Returns when no background block is left. Without a `progress` the progress is shown at the
/// terminal, if there is one, from the first second on.
void wait_until_done(const Selection& selection, CountingQueue& background,
                     const Progress& progress = nullptr);

/// Shares the selection by an extension's view controller, as a share menu would: hands it the
/// context, asks for its view on this thread, and waits until its background work has ended.
/// Answers the recorded events, without those of the items. Asks for nothing when the selection is
/// empty.
template <std::derived_from<platform::NSViewController> Controller>
[[nodiscard]] std::vector<recording::Event> run(Selection& selection, CountingQueue& background,
                                                const Progress& progress = nullptr) {
  auto context = make_context(selection);
  if (selection.empty()) {
    return {};
  }
  Controller controller;
  controller.set_extension_context(std::move(context));
  const auto recorder = std::make_shared<recording::EventRecorder>();
  {
    const recording::EventRecorder::Scope scope(recorder);
    controller.view();
  }
  wait_until_done(selection, background, progress);
  return recorder->close();
}

}  // namespace quoll::share
