#pragma once

#include <vector>

#include "apps/image-helper/codecs/picture.h"

namespace quoll::fuzz {

/// A picture with all its pixels, and a position for reading them.
class Pixels final : public image_helper::PictureSource {
 public:
  Pixels(image_helper::Picture picture, std::vector<unsigned char> bytes);
  /// Reads all rows of `source`.
  explicit Pixels(image_helper::PictureSource& source);

  void read(unsigned char* row) override;
  void begin_again() { next_ = 0; }

  [[nodiscard]] const std::vector<unsigned char>& bytes() const { return bytes_; }
  /// True when size, kind of samples and all pixels are the same.
  [[nodiscard]] bool is_as(const Pixels& other) const;

 private:
  std::vector<unsigned char> bytes_;
  std::size_t next_ = 0;
};

/// Writes the pixels with `write` and reads them again. Stops the run when they differ.
void check_written(Pixels& pixels, void (*write)(image_helper::PictureSource&, int));

}  // namespace quoll::fuzz
