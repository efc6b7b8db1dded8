#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "apps/image-helper/codecs/readers.h"

namespace quoll::image_helper {

namespace {

class GifFile {
 public:
  explicit GifFile(ByteView file) : rest_(file) {
    int error = 0;
    gif_ = DGifOpen(this, read, &error);
    if (gif_ == nullptr) {
      fail(error);
    }
  }
  GifFile(const GifFile&) = delete;
  GifFile& operator=(const GifFile&) = delete;
  ~GifFile() { DGifCloseFile(gif_, nullptr); }

  [[nodiscard]] GifFileType* get() const { return gif_; }
  void check(int result) const {
    if (result == GIF_ERROR) {
      fail(gif_->Error);
    }
  }
  /// Reads an extension, which may tell how the next frame is drawn.
  void read_extension(GraphicsControlBlock& control) {
    int code = 0;
    GifByteType* block = nullptr;  // one byte with the length, then that many bytes
    for (check(DGifGetExtension(gif_, &code, &block)); block != nullptr;
         check(DGifGetExtensionNext(gif_, &block))) {
      if (code == GRAPHICS_EXT_FUNC_CODE) {
        DGifExtensionToGCB(block[0], block + 1, &control);
      }
    }
  }
  void skip_frame() {
    check(DGifGetImageDesc(gif_));
    int size = 0;
    GifByteType* block = nullptr;
    for (check(DGifGetCode(gif_, &size, &block)); block != nullptr;) {
      check(DGifGetCodeNext(gif_, &block));
    }
  }

 private:
  [[noreturn]] static void fail(int error) {
    const char* const reason = GifErrorString(error);
    throw ImageError(reason != nullptr ? reason : "the GIF file is damaged");
  }
  static int read(GifFileType* gif, GifByteType* out, int length) {
    ByteView& rest = static_cast<GifFile*>(gif->UserData)->rest_;
    const std::size_t given = std::min(static_cast<std::size_t>(length), rest.size());
    std::copy_n(rest.begin(), given, out);
    rest = rest.subspan(given);
    return static_cast<int>(given);
  }

  ByteView rest_;
  GifFileType* gif_ = nullptr;
};

/// The place of each line of a frame, in the order in which the file has the lines. Interlaced
/// lines come in four passes.
std::vector<std::uint32_t> line_order(std::uint32_t height, bool interlaced) {
  struct Pass {
    std::uint32_t first, step;
  };
  constexpr Pass kPasses[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
  constexpr Pass kWhole[] = {{0, 1}};
  std::vector<std::uint32_t> order;
  order.reserve(height);
  for (const Pass pass : interlaced ? std::span<const Pass>(kPasses) : kWhole) {
    for (std::uint32_t y = pass.first; y < height; y += pass.step) {
      order.push_back(y);
    }
  }
  return order;
}

/// Draws the frame on its canvas. The canvas is transparent where the frame is not.
std::unique_ptr<HeldPicture> read_frame(GifFile& file, int transparent) {
  GifFileType* const gif = file.get();
  file.check(DGifGetImageDesc(gif));
  const GifImageDesc& frame = gif->Image;
  const ColorMapObject* const map = frame.ColorMap != nullptr ? frame.ColorMap : gif->SColorMap;
  if (map == nullptr) {
    throw ImageError("a GIF file without colours");
  }
  const auto side = [](int number) { return static_cast<std::uint32_t>(number); };
  const std::uint32_t left = side(frame.Left), top = side(frame.Top), width = side(frame.Width),
                      height = side(frame.Height);
  check_size(width, height);

  Picture picture;
  picture.width = side(gif->SWidth);
  picture.height = side(gif->SHeight);
  const bool covers = left == 0 && top == 0 && width >= picture.width && height >= picture.height;
  picture.channels = covers && transparent == NO_TRANSPARENT_COLOR ? 3 : 4;
  auto canvas = std::make_unique<HeldPicture>(picture);
  std::vector<GifPixelType> line(width);
  for (const std::uint32_t y : line_order(height, frame.Interlace)) {
    file.check(DGifGetLine(gif, line.data(), frame.Width));
    for (std::uint32_t x = 0; x < width; ++x) {
      if (line[x] == transparent) {
        continue;
      }
      if (line[x] >= map->ColorCount) {
        throw ImageError("a GIF file with a colour that it does not have");
      }
      if (top + y < picture.height && left + x < picture.width) {
        const GifColorType& colour = map->Colors[line[x]];
        const unsigned char rgba[4] = {colour.Red, colour.Green, colour.Blue, 0xff};
        std::memcpy(canvas->row(top + y) + std::size_t{left + x} * picture.channels, rgba,
                    picture.channels);
      }
    }
  }
  return canvas;
}

}  // namespace

std::unique_ptr<PictureSource> open_gif(ByteView bytes) {
  GifFile file(bytes);
  check_size(static_cast<std::uint64_t>(file.get()->SWidth),
             static_cast<std::uint64_t>(file.get()->SHeight));
  GraphicsControlBlock control{};
  control.TransparentColor = NO_TRANSPARENT_COLOR;
  std::unique_ptr<HeldPicture> picture;
  for (;;) {
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    file.check(DGifGetRecordType(file.get(), &record));
    if (record == EXTENSION_RECORD_TYPE) {
      file.read_extension(control);
    } else if (record == IMAGE_DESC_RECORD_TYPE && picture == nullptr) {
      picture = read_frame(file, control.TransparentColor);
    } else if (record == IMAGE_DESC_RECORD_TYPE) {
      file.skip_frame();
    } else if (record == TERMINATE_RECORD_TYPE) {
      break;
    }
  }
  if (picture == nullptr) {
    throw ImageError("a GIF file without an image");
  }
  return picture;
}

}  // namespace quoll::image_helper
