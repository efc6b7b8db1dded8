#include <endian.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <vector>

#include "apps/image-helper/codecs/writers.h"

namespace quoll::image_helper {

namespace {

int on_error(TIFF*, void* reason, const char*, const char* format, va_list arguments) {
  std::vsnprintf(static_cast<char*>(reason), 200, format, arguments);
  return 1;
}

/// Writes the tags. The pixels are not compressed, because the file is read again at once.
void set_tags(TIFF* tiff, const Picture& picture, std::uint32_t rows) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.channels);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.bits);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
               picture.channels < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rows);
  if (picture.channels % 2 == 0) {
    const std::uint16_t kind = EXTRASAMPLE_UNASSALPHA;
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
  }
  if (!picture.profile.empty()) {
    TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(picture.profile.size()),
                 picture.profile.data());
  }
}

}  // namespace

void write_tiff(PictureSource& source, int descriptor) {
  const Picture& picture = source.picture();
  char reason[200] = "the TIFF file cannot be written";
  const auto check = [&](bool good) {
    if (!good) {
      throw ImageError(reason);
    }
  };
  TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
  TIFFOpenOptionsSetErrorHandlerExtR(options, on_error, reason);
  const int own = dup(descriptor);  // closing the TIFF closes the copy
  const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(TIFFFdOpenExt(own, "image", "w", options),
                                                    TIFFClose);
  TIFFOpenOptionsFree(options);
  check(tiff != nullptr);

  constexpr std::size_t kStrip = std::size_t{1} << 18;
  const std::size_t length = picture.row_bytes();
  const auto rows = static_cast<std::uint32_t>(std::max<std::size_t>(kStrip / length, 1));
  set_tags(tiff.get(), picture, rows);
  std::vector<unsigned char> strip(rows * length);
  std::size_t filled = 0;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    source.read(strip.data() + filled);
    filled += length;
    if (filled == strip.size() || y + 1 == picture.height) {
      if (picture.bits == 16) {
        auto* const samples = reinterpret_cast<std::uint16_t*>(strip.data());
        std::transform(samples, samples + filled / 2, samples,
                       [](std::uint16_t sample) { return be16toh(sample); });
      }
      check(TIFFWriteEncodedStrip(tiff.get(), y / rows, strip.data(),
                                  static_cast<tmsize_t>(filled)) == static_cast<tmsize_t>(filled));
      filled = 0;
    }
  }
  check(TIFFWriteDirectory(tiff.get()) != 0);
}

}  // namespace quoll::image_helper
