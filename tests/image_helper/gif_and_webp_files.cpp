#include <gif_lib.h>
#include <gtest/gtest.h>
#include <webp/encode.h>

#include <string_view>

#include "tests/image_helper/sample_files.h"

namespace quoll::test {

using foundation::Bytes;

namespace {

void append_number(Bytes& bytes, std::size_t number, unsigned length) {
  for (unsigned i = 0; i < length; ++i) {
    bytes.push_back(static_cast<unsigned char>(number >> (8 * i)));
  }
}

void append_chunk(Bytes& bytes, std::string_view name, const Bytes& data) {
  bytes.insert(bytes.end(), name.begin(), name.end());
  append_number(bytes, data.size(), 4);
  bytes.insert(bytes.end(), data.begin(), data.end());
  if (data.size() % 2 != 0) {
    bytes.push_back(0);
  }
}

Bytes riff(const Bytes& chunks) {
  Bytes form{'W', 'E', 'B', 'P'};
  form.insert(form.end(), chunks.begin(), chunks.end());
  Bytes file;
  append_chunk(file, "RIFF", form);
  return file;
}

Bytes canvas(unsigned flags, std::uint32_t width, std::uint32_t height) {
  Bytes data;
  append_number(data, flags, 4);
  append_number(data, width - 1, 3);
  append_number(data, height - 1, 3);
  return data;
}

/// The chunks of a simple file: what follows its twelve bytes of header.
Bytes image_chunks(const SampleImage& image) {
  const Bytes file = webp_file(image);
  return Bytes(file.begin() + 12, file.end());
}

void write_frame(GifFileType* gif, const GifFrame& frame) {
  if (frame.transparent >= 0) {
    GraphicsControlBlock control{};
    control.TransparentColor = frame.transparent;
    GifByteType packed[4];
    const std::size_t length = EGifGCBToExtension(&control, packed);
    EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, static_cast<int>(length), packed);
  }
  const int width = static_cast<int>(frame.width);
  EXPECT_EQ(EGifPutImageDesc(gif, static_cast<int>(frame.left), static_cast<int>(frame.top), width,
                             static_cast<int>(frame.height), frame.interlaced, nullptr),
            GIF_OK);
  constexpr std::uint32_t kFirst[] = {0, 4, 2, 1}, kStep[] = {8, 8, 4, 2};
  const auto put = [&](std::uint32_t y) {
    const auto start = frame.indices.begin() + std::ptrdiff_t{y} * width;
    Bytes line(start, start + width);
    EXPECT_EQ(EGifPutLine(gif, line.data(), width), GIF_OK);
  };
  for (int pass = 0; pass < (frame.interlaced ? 4 : 1); ++pass) {
    const std::uint32_t step = frame.interlaced ? kStep[pass] : 1;
    for (std::uint32_t y = kFirst[pass]; y < frame.height; y += step) {
      put(y);
    }
  }
}

}  // namespace

Bytes gif_file(std::uint32_t width, std::uint32_t height, const std::vector<GifFrame>& frames) {
  constexpr int kColours = 16;
  Bytes file;
  int error = 0;
  GifFileType* const gif = EGifOpen(
      &file,
      [](GifFileType* self, const GifByteType* bytes, int length) {
        auto& to = *static_cast<Bytes*>(self->UserData);
        to.insert(to.end(), bytes, bytes + length);
        return length;
      },
      &error);
  EGifSetGifVersion(gif, true);
  ColorMapObject* const map = GifMakeMapObject(kColours, nullptr);
  for (unsigned i = 0; i < kColours; ++i) {
    std::uint16_t rgb[3];
    palette_colour(i, rgb);
    map->Colors[i] = {static_cast<GifByteType>(rgb[0]), static_cast<GifByteType>(rgb[1]),
                      static_cast<GifByteType>(rgb[2])};
  }
  EGifPutScreenDesc(gif, static_cast<int>(width), static_cast<int>(height), 4, 0, map);
  GifFreeMapObject(map);
  for (const GifFrame& frame : frames) {
    write_frame(gif, frame);
  }
  EGifCloseFile(gif, &error);
  return file;
}

Bytes webp_file(const SampleImage& image) {
  const Bytes pixels(image.samples.begin(), image.samples.end());
  const int width = static_cast<int>(image.width), height = static_cast<int>(image.height);
  const int stride = width * static_cast<int>(image.channels);
  // The colours of transparent pixels are kept too, which the simple calls would not do.
  WebPConfig config;
  WebPConfigInit(&config);
  WebPConfigLosslessPreset(&config, 1);
  config.exact = 1;
  WebPPicture picture;
  WebPPictureInit(&picture);
  picture.use_argb = 1;
  picture.width = width;
  picture.height = height;
  EXPECT_TRUE(image.channels == 4 ? WebPPictureImportRGBA(&picture, pixels.data(), stride)
                                  : WebPPictureImportRGB(&picture, pixels.data(), stride));
  WebPMemoryWriter writer;
  WebPMemoryWriterInit(&writer);
  picture.writer = WebPMemoryWrite;
  picture.custom_ptr = &writer;
  EXPECT_TRUE(WebPEncode(&config, &picture));
  Bytes file(writer.mem, writer.mem + writer.size);
  WebPMemoryWriterClear(&writer);
  WebPPictureFree(&picture);
  return file;
}

Bytes extended_webp_file(const SampleImage& image, const Bytes& exif) {
  constexpr unsigned kProfile = 0x20, kAlpha = 0x10, kExif = 0x08;
  Bytes chunks;
  append_chunk(chunks, "VP8X",
               canvas((image.profile.empty() ? 0 : kProfile) | (image.channels == 4 ? kAlpha : 0) |
                          (exif.empty() ? 0 : kExif),
                      image.width, image.height));
  if (!image.profile.empty()) {
    append_chunk(chunks, "ICCP", image.profile);
  }
  const Bytes frame = image_chunks(image);
  chunks.insert(chunks.end(), frame.begin(), frame.end());
  if (!exif.empty()) {
    append_chunk(chunks, "EXIF", exif);
  }
  return riff(chunks);
}

Bytes animated_webp_file(std::uint32_t width, std::uint32_t height,
                         const std::vector<WebpFrame>& frames) {
  constexpr unsigned kAnimation = 0x02, kAlpha = 0x10;
  Bytes chunks;
  append_chunk(chunks, "VP8X", canvas(kAnimation | kAlpha, width, height));
  append_chunk(chunks, "ANIM", {0, 0, 0, 0, 0, 0});
  for (const WebpFrame& frame : frames) {
    Bytes data;
    append_number(data, frame.left / 2, 3);
    append_number(data, frame.top / 2, 3);
    append_number(data, frame.image.width - 1, 3);
    append_number(data, frame.image.height - 1, 3);
    append_number(data, 100, 3);  // milliseconds
    data.push_back(0);
    const Bytes image = image_chunks(frame.image);
    data.insert(data.end(), image.begin(), image.end());
    append_chunk(chunks, "ANMF", data);
  }
  return riff(chunks);
}

}  // namespace quoll::test
