#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "quoll/linux/image_helper/images.h"
#include "quoll/platform/desktop.h"
#include "tests/support/recorders.h"

namespace quoll::test {

using foundation::Bytes;
using platform::BitmapImageFileType;

/// The helper that was built, and a log that is kept.
class ImageHelper : public testing::Test {
 protected:
  ImageHelper()
      : desktop_([this] {
          platform::Desktop desktop;
          desktop.log = log_;
          return desktop;
        }()) {}

  [[nodiscard]] std::optional<Bytes> to_png(const Bytes& file) const {
    return images_->convert(file, BitmapImageFileType::NSBitmapImageFileTypePNG);
  }
  [[nodiscard]] std::optional<Bytes> to_tiff(const Bytes& file) const {
    return images_->convert(file, BitmapImageFileType::NSBitmapImageFileTypeTIFF);
  }

  std::shared_ptr<RecordingLog> log_ = std::make_shared<RecordingLog>();
  platform::ScopedDesktop desktop_;
  std::shared_ptr<platform::Images> images_ = image_helper::make_images(QUOLL_TEST_IMAGE_HELPER);
};

}  // namespace quoll::test
