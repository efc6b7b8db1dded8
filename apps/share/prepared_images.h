#pragma once

#include <memory>
#include <utility>

#include "apps/share/moving_files.h"
#include "quoll/platform/images.h"

namespace quoll::share {

/// Images that know the pictures which the host has prepared. The extension is given the path of
/// the PNG file in place of the picture's bytes; as PNG these are themselves, and when they are to
/// be written the file is moved. So the extension never waits for a picture, nor holds one. Any
/// thread may call.
class PreparedImages final : public platform::Images {
 public:
  PreparedImages(std::shared_ptr<Images> images, std::shared_ptr<const MovingFiles> files)
      : images_(std::move(images)), files_(std::move(files)) {}

  std::optional<Size> size(const foundation::Bytes& file) override { return images_->size(file); }
  std::optional<foundation::Bytes> convert(const foundation::Bytes& file,
                                           platform::BitmapImageFileType type) override {
    return files_->is_prepared({reinterpret_cast<const char*>(file.data()), file.size()})
               ? file
               : images_->convert(file, type);
  }

 private:
  std::shared_ptr<Images> images_;
  std::shared_ptr<const MovingFiles> files_;
};

}  // namespace quoll::share
