#include "apps/share/prepare.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/share/interruption.h"
#include "apps/share/received_picture.h"
#include "apps/share/terminal_line.h"
#include "quoll/foundation/path.h"
#include "quoll/linux/image_helper/make_png.h"
#include "quoll/linux/image_helper/memory_file.h"
#include "quoll/linux/posix/copy_item.h"
#include "quoll/linux/posix/descriptor_io.h"
#include "quoll/linux/posix/file_contents.h"
#include "quoll/linux/posix/paths.h"
#include "quoll/platform/log.h"

namespace quoll::share {

namespace {

/// Tells how far a preparation is, not too often.
class Teller {
 public:
  Teller(std::size_t items, const Progress& progress) : items_(items), progress_(progress) {}

  /// `part` of the next item, of 100, is ready too.
  void tell(std::size_t ready, std::size_t part, std::uint64_t bytes) {
    constexpr std::size_t kParts = 100;
    const auto now = Clock::now();
    if (now < next_) {
      return;
    }
    next_ = now + std::chrono::milliseconds(100);
    if (progress_) {
      progress_(ready * kParts + part, items_ * kParts);
    } else {
      shown_.show(std::to_string(ready) + " of " + std::to_string(items_) + " items are ready, " +
                  std::to_string(bytes / 1'000'000) + " MB copied");
    }
  }

 private:
  using Clock = std::chrono::steady_clock;

  std::size_t items_;
  const Progress& progress_;
  TerminalLine shown_;
  Clock::time_point next_ = Clock::now();
};

class Preparation {
 public:
  Preparation(Selection& selection, MovingFiles& files, const std::string& image_helper,
              const Progress& progress)
      : selection_(selection),
        files_(files),
        image_helper_(image_helper),
        teller_(selection.items.size(), progress) {}

  bool run() {
    std::vector<std::shared_ptr<SharedItem>> kept;
    for (auto& item : std::exchange(selection_.items, {})) {
      if (prepare(*item)) {
        kept.push_back(std::move(item));
      }
      if (Interruption::has_come()) {
        return false;
      }
      teller_.tell(++ready_, 0, bytes_);
    }
    selection_.items = std::move(kept);
    return true;
  }

 private:
  /// False when the item is left out.
  bool prepare(SharedItem& item) {
    if (const auto picture = item.value().as<ReceivedPicture>()) {
      prepare_picture(item, *picture);
      return true;
    }
    if (!selection_.prepared_files) {
      return true;
    }
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
    begin_file(*source);
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

  void begin_file(const std::string& path) {
    struct stat status {};
    size_ = stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
    copied_ = 0;
  }

  void prepare_picture(SharedItem& item, const ReceivedPicture& picture) {
    if (const auto path = png_of(picture)) {
      files_.add_prepared(*path);
      item.answer_with(foundation::Bytes(path->begin(), path->end()));
      return;
    }
    struct stat status {};
    const auto size =
        fstat(picture.file(), &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
    const image_helper::Mapping file(picture.file(), size);
    item.answer_with(foundation::Bytes(file.bytes().begin(), file.bytes().end()));
  }

  /// The path of a PNG file of the picture; none when there can be none.
  std::optional<std::string> png_of(const ReceivedPicture& picture) {
    constexpr mode_t kMode = 0666;  // as a file has that the extension writes
    const auto png = selection_.prepared_files
                         ? image_helper::make_png(image_helper_, picture.file(),
                                                  [] { return !Interruption::has_come(); })
                         : posix::UniqueFd();
    if (!png) {
      return std::nullopt;
    }
    size_ = 0;
    const auto [file, path] = selection_.prepared_files->make("image.png", kMode);
    const auto step = [this](std::uint64_t bytes) { return after_piece(bytes); };
    if (file && !posix::copy_contents(png.get(), file.get(), step) &&
        posix::late_write_error(file.get()) == 0) {
      return path;
    }
    unlink(path.c_str());
    return std::nullopt;
  }

  bool after_piece(std::uint64_t bytes) {
    bytes_ += bytes;
    copied_ += bytes;
    teller_.tell(ready_, size_ == 0 ? 0 : std::min<std::uint64_t>(100 * copied_ / size_, 99),
                 bytes_);
    return !Interruption::has_come();
  }

  Selection& selection_;
  MovingFiles& files_;
  const std::string& image_helper_;
  Teller teller_;
  std::size_t ready_ = 0;
  std::uint64_t bytes_ = 0;
  std::uint64_t size_ = 0, copied_ = 0;  ///< of the file that is copied
};

}  // namespace

bool prepare(Selection& selection, MovingFiles& files, const std::string& image_helper,
             const Progress& progress) {
  return Preparation(selection, files, image_helper, progress).run();
}

}  // namespace quoll::share
