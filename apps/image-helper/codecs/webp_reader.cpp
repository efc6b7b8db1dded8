#include <webp/decode.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/image-helper/codecs/exif.h"
#include "apps/image-helper/codecs/readers.h"

namespace quoll::image_helper {

namespace {

std::uint32_t little_endian(ByteView bytes, std::size_t offset, unsigned length) {
  std::uint32_t number = 0;
  for (unsigned i = length; i-- > 0;) {
    number = number << 8 | bytes[offset + i];
  }
  return number;
}

struct Chunk {
  std::string_view name;
  ByteView data;
};

/// Takes the first chunk off `rest`. Raises when it is not complete.
Chunk take_chunk(ByteView& rest) {
  constexpr std::size_t kHeader = 8;
  const std::size_t length = rest.size() < kHeader ? 0 : little_endian(rest, 4, 4);
  if (rest.size() < kHeader || rest.size() - kHeader < length) {
    throw ImageError("the WebP file ends too early");
  }
  const Chunk chunk{{reinterpret_cast<const char*>(rest.data()), 4}, rest.subspan(kHeader, length)};
  const std::size_t padded = kHeader + length + length % 2;
  rest = rest.subspan(std::min(padded, rest.size()));
  return chunk;
}

/// What a file says about its first image. The frame begins with its ALPH, VP8 or VP8L chunk.
struct Contents {
  std::uint32_t width = 0, height = 0;  ///< of the canvas; 0 when there is only the frame
  std::uint32_t left = 0, top = 0;
  ByteView frame;
  ByteView profile;
  ByteView exif;
};

void read_chunk(const Chunk& chunk, ByteView from_here, Contents& contents) {
  constexpr std::size_t kCanvas = 10;
  constexpr std::size_t kFrameHeader = 16;
  if (chunk.name == "VP8X" && chunk.data.size() >= kCanvas) {
    contents.width = little_endian(chunk.data, 4, 3) + 1;
    contents.height = little_endian(chunk.data, 7, 3) + 1;
  } else if (chunk.name == "ICCP") {
    contents.profile = chunk.data;
  } else if (chunk.name == "EXIF") {
    contents.exif = chunk.data;
  } else if (!contents.frame.empty()) {
    return;  // a later frame
  } else if (chunk.name == "ANMF" && chunk.data.size() > kFrameHeader) {
    contents.left = little_endian(chunk.data, 0, 3) * 2;
    contents.top = little_endian(chunk.data, 3, 3) * 2;
    contents.frame = chunk.data.subspan(kFrameHeader);
  } else if (chunk.name == "ALPH" || chunk.name == "VP8 " || chunk.name == "VP8L") {
    contents.frame = from_here;
  }
}

Contents read_contents(ByteView file) {
  constexpr std::size_t kHeader = 12;  // "RIFF", the length of what follows, "WEBP"
  if (file.size() < kHeader || std::memcmp(file.data() + 8, "WEBP", 4) != 0) {
    throw ImageError("these bytes are no image that can be read");
  }
  const std::uint32_t length = little_endian(file, 4, 4);
  if (length < 4 || length > file.size() - 8) {
    throw ImageError("the WebP file ends too early");
  }
  Contents contents;
  for (ByteView rest = file.subspan(kHeader, length - 4); !rest.empty();) {
    const ByteView from_here = rest;
    read_chunk(take_chunk(rest), from_here, contents);
  }
  return contents;
}

/// Decodes the frame to its place on the canvas. `first` is where its first pixel goes.
void decode(const Contents& contents, const WebPBitstreamFeatures& frame, const Picture& canvas,
            unsigned char* first) {
  WebPDecoderConfig config;
  if (WebPInitDecoderConfig(&config) == 0) {
    throw ImageError("the WebP library is of another version");
  }
  config.output.colorspace = canvas.channels == 4 ? MODE_RGBA : MODE_RGB;
  config.output.is_external_memory = 1;
  config.output.u.RGBA.rgba = first;
  config.output.u.RGBA.stride = static_cast<int>(canvas.row_bytes());
  config.output.u.RGBA.size = canvas.row_bytes() * static_cast<std::size_t>(frame.height - 1) +
                              static_cast<std::size_t>(frame.width) * canvas.pixel_bytes();
  if (WebPDecode(contents.frame.data(), contents.frame.size(), &config) != VP8_STATUS_OK) {
    throw ImageError("the WebP file is damaged");
  }
}

}  // namespace

std::unique_ptr<PictureSource> open_webp(ByteView file) {
  const Contents contents = read_contents(file);
  WebPBitstreamFeatures frame;
  if (WebPGetFeatures(contents.frame.data(), contents.frame.size(), &frame) != VP8_STATUS_OK) {
    throw ImageError("the WebP file is damaged");
  }
  const auto width = static_cast<std::uint32_t>(frame.width);
  const auto height = static_cast<std::uint32_t>(frame.height);
  Picture picture;
  picture.width = contents.width != 0 ? contents.width : width;
  picture.height = contents.height != 0 ? contents.height : height;
  check_size(picture.width, picture.height);
  if (contents.left + width > picture.width || contents.top + height > picture.height) {
    throw ImageError("a WebP file with a frame outside its canvas");
  }
  const bool covers = width == picture.width && height == picture.height;
  picture.channels = covers && frame.has_alpha == 0 ? 3 : 4;
  picture.profile.assign(contents.profile.begin(), contents.profile.end());
  picture.orientation = orientation_of_exif(contents.exif);

  auto canvas = std::make_unique<HeldPicture>(std::move(picture));
  const Picture& placed = canvas->picture();
  decode(contents, frame, placed, canvas->row(contents.top) + contents.left * placed.pixel_bytes());
  return canvas;
}

}  // namespace quoll::image_helper
