#include "apps/share/leave.h"

#include <unistd.h>

#include <algorithm>

namespace quoll::share {

int leave(Selection& selection, ExitCode code) {
  selection.folder.reset();
  const bool is_busy =
      std::any_of(selection.items.begin(), selection.items.end(), [](const auto& item) {
        return item->state() == SharedItem::State::kAsked ||
               item->state() == SharedItem::State::kAnswering;
      });
  if (is_busy) {
    _exit(static_cast<int>(code));
  }
  return static_cast<int>(code);
}

}  // namespace quoll::share
