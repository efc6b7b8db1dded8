#include "apps/image-helper/codecs/upright.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

namespace quoll::image_helper {

namespace {

class Turned final : public PictureSource {
 public:
  explicit Turned(std::unique_ptr<PictureSource> source) : source_(std::move(source)) {
    picture_ = source_->picture();
    const unsigned orientation = std::exchange(picture_.orientation, 1);
    swapped_ = orientation >= 5;
    from_right_ = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    from_bottom_ = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    if (swapped_) {
      std::swap(picture_.width, picture_.height);
    }
  }

  void read(unsigned char* row) override {
    if (!stored_) {
      stored_.emplace(*source_);
      source_.reset();
      band_.resize(picture_.row_bytes() * kBand);
    }
    if (next_ % kBand == 0) {
      fill_band();
    }
    std::memcpy(row, band_.data() + next_++ % kBand * picture_.row_bytes(), picture_.row_bytes());
  }

 private:
  /// The number of rows that are made together. A turned picture reads its stored rows across; so
  /// pixels that lie side by side there are used while they are in the cache.
  static constexpr std::uint32_t kBand = 32;

  void fill_band() {
    const std::size_t pixel = picture_.pixel_bytes();
    const std::uint32_t rows = std::min(kBand, picture_.height - next_);
    for (std::uint32_t x = 0; x < picture_.width; ++x) {
      for (std::uint32_t y = 0; y < rows; ++y) {
        std::memcpy(band_.data() + y * picture_.row_bytes() + x * pixel, stored_at(x, next_ + y),
                    pixel);
      }
    }
  }

  /// The stored pixel that is shown at `x`, `y`.
  [[nodiscard]] const unsigned char* stored_at(std::uint32_t x, std::uint32_t y) {
    const Picture& stored = stored_->picture();
    if (swapped_) {
      std::swap(x, y);
    }
    const std::uint32_t column = from_right_ ? stored.width - 1 - x : x;
    const std::uint32_t line = from_bottom_ ? stored.height - 1 - y : y;
    return stored_->row(line) + column * stored.pixel_bytes();
  }

  std::unique_ptr<PictureSource> source_;
  std::optional<HeldPicture> stored_;
  std::vector<unsigned char> band_;
  std::uint32_t next_ = 0;
  bool swapped_ = false;
  bool from_right_ = false;
  bool from_bottom_ = false;
};

}  // namespace

std::unique_ptr<PictureSource> upright(std::unique_ptr<PictureSource> source) {
  if (source->picture().orientation == 1) {
    return source;
  }
  return std::make_unique<Turned>(std::move(source));
}

}  // namespace quoll::image_helper
