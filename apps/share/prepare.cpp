#include "apps/share/prepare.h"

#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "apps/share/interruption.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/posix/copy_item.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/paths.h"
#include "quoll/platform/log.h"

namespace quoll::share {

namespace {

using namespace std::chrono_literals;

/// Tells how far a preparation is, not too often.
class Teller {
 public:
  Teller(std::size_t items, const Progress& progress) : items_(items), progress_(progress) {}
  Teller(const Teller&) = delete;
  Teller& operator=(const Teller&) = delete;
  ~Teller() {
    if (is_shown_) {
      static_cast<void>(posix::write_all(STDERR_FILENO, "\r\033[K"));
    }
  }

  void tell(std::size_t ready, std::uint64_t bytes) {
    const auto now = Clock::now();
    if (now < next_) {
      return;
    }
    next_ = now + 100ms;
    if (progress_) {
      progress_(ready, items_);
    } else if (is_terminal_ && now - begin_ >= 1s) {
      is_shown_ = true;
      static_cast<void>(posix::write_all(
          STDERR_FILENO, "\r" + std::to_string(ready) + " of " + std::to_string(items_) +
                             " items are ready, " + std::to_string(bytes / 1'000'000) +
                             " MB copied\033[K"));
    }
  }

 private:
  using Clock = std::chrono::steady_clock;

  std::size_t items_;
  const Progress& progress_;
  bool is_terminal_ = isatty(STDERR_FILENO) == 1;
  bool is_shown_ = false;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point next_ = begin_;
};

class Preparation {
 public:
  Preparation(Selection& selection, MovingFiles& files, const Progress& progress)
      : selection_(selection), files_(files), teller_(selection.items.size(), progress) {}

  bool run() {
    std::vector<std::shared_ptr<SharedItem>> kept;
    for (auto& item : std::exchange(selection_.items, {})) {
      if (prepare(*item)) {
        kept.push_back(std::move(item));
      }
      if (Interruption::has_come()) {
        return false;
      }
      teller_.tell(++ready_, bytes_);
    }
    selection_.items = std::move(kept);
    return true;
  }

 private:
  /// False when the item is left out.
  bool prepare(SharedItem& item) {
    PreparedFiles& prepared = *selection_.prepared_files;
    const auto source = foundation::file_system_path(item.value().as<foundation::NSURL>());
    if (!source || !posix::is_usable_path(*source)) {
      return true;
    }
    if (prepared.holds(*source)) {  // bytes that came without a file
      files_.add_prepared(*source);
      return true;
    }
    const auto place = prepared.make_place(foundation::last_path_component(*source));
    if (!place) {
      return true;
    }
    const auto failure = posix::copy_item(
        *source, *place, [this](std::uint64_t bytes) { return after_piece(bytes); });
    if (!failure) {
      files_.add_prepared(*place);
      item.answer_with(foundation::NSURL::file_url(*place, false));
    } else if (!failure->writing && !Interruption::has_come()) {
      platform::log("prepare %@", foundation::file_error(failure->number, *source, false));
      selection_.left_out.push_back({item.given(), posix::error_words(failure->number)});
      return false;
    }
    return true;
  }

  bool after_piece(std::uint64_t bytes) {
    bytes_ += bytes;
    teller_.tell(ready_, bytes_);
    return !Interruption::has_come();
  }

  Selection& selection_;
  MovingFiles& files_;
  Teller teller_;
  std::size_t ready_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace

bool prepare(Selection& selection, MovingFiles& files, const Progress& progress) {
  return !selection.prepared_files || Preparation(selection, files, progress).run();
}

}  // namespace quoll::share
