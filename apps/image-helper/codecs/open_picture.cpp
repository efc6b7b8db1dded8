#include <array>
#include <string_view>
#include <utility>

#include "apps/image-helper/codecs/readers.h"
#include "apps/image-helper/codecs/upright.h"

namespace quoll::image_helper {

namespace {

using namespace std::string_view_literals;

struct Format {
  std::string_view beginning;
  std::unique_ptr<PictureSource> (*open)(ByteView);
};

constexpr std::array kFormats{
    Format{"\x89PNG\r\n\x1a\n"sv, open_png},
    Format{"\xff\xd8\xff"sv, open_jpeg},
    Format{"II*\0"sv, open_tiff},
    Format{"MM\0*"sv, open_tiff},
    Format{"II+\0"sv, open_tiff},
    Format{"MM\0+"sv, open_tiff},
    Format{"GIF87a"sv, open_gif},
    Format{"GIF89a"sv, open_gif},
    Format{"RIFF"sv, open_webp},
};

}  // namespace

std::unique_ptr<PictureSource> open_picture(ByteView file) {
  const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
  for (const Format& format : kFormats) {
    if (bytes.starts_with(format.beginning)) {
      auto source = format.open(file);
      source->drop_unfitting_profile();
      return upright(std::move(source));
    }
  }
  throw ImageError(file.empty() ? "there are no bytes"
                                : "these bytes are no image that can be read");
}

}  // namespace quoll::image_helper
