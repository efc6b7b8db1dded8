#include <endian.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "apps/image-helper/codecs/cmyk.h"
#include "apps/image-helper/codecs/readers.h"

namespace quoll::image_helper {

namespace {

/// The file as libtiff reads it. It remembers every error, because libtiff goes on where it can.
/// Damage is an error, a read beyond the end, and, from the first pixel on, any warning.
class TiffFile {
 public:
  explicit TiffFile(ByteView file) : file_(file) {
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(kMostHeldBytes));
    TIFFOpenOptionsSetErrorHandlerExtR(options, on_error, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, on_warning, this);
    tiff_.reset(TIFFClientOpenExt("image", "rm", this, read, write, seek, close, size, nullptr,
                                  nullptr, options));
    TIFFOpenOptionsFree(options);
    check(tiff_ != nullptr);
  }
  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;
  ~TiffFile() = default;

  [[nodiscard]] TIFF* get() const { return tiff_.get(); }
  template <typename Number>
  [[nodiscard]] Number field(std::uint32_t tag, Number fallback) const {
    TIFFGetFieldDefaulted(get(), tag, &fallback);
    return fallback;
  }
  void begin_pixels() { strict_ = true; }
  /// Raises when `good` is false, or when there was an error before.
  void check(bool good) const {
    if (!good || reason_[0] != '\0') {
      throw ImageError(reason_[0] != '\0' ? reason_ : "the TIFF file is damaged");
    }
  }

 private:
  void note(const char* format, va_list arguments) {
    if (reason_[0] == '\0') {
      std::vsnprintf(reason_, sizeof reason_, format, arguments);
    }
  }
  static int on_error(TIFF*, void* self, const char*, const char* format, va_list arguments) {
    static_cast<TiffFile*>(self)->note(format, arguments);
    return 1;
  }
  static int on_warning(TIFF*, void* data, const char*, const char* format, va_list arguments) {
    auto* const self = static_cast<TiffFile*>(data);
    if (self->strict_) {
      self->note(format, arguments);
    }
    return 1;
  }
  static tmsize_t read(thandle_t handle, void* out, tmsize_t length) {
    auto& self = *static_cast<TiffFile*>(handle);
    const std::size_t wanted = static_cast<std::size_t>(length);
    const std::size_t there =
        self.offset_ < self.file_.size() ? self.file_.size() - self.offset_ : 0;
    const std::size_t given = std::min(wanted, there);
    std::copy_n(self.file_.data() + std::min(self.offset_, self.file_.size()), given,
                static_cast<unsigned char*>(out));
    self.offset_ += given;
    if (given < wanted && self.reason_[0] == '\0') {
      std::snprintf(self.reason_, sizeof self.reason_, "the TIFF file ends too early");
    }
    return static_cast<tmsize_t>(given);
  }
  static tmsize_t write(thandle_t, void*, tmsize_t) { return -1; }
  static toff_t seek(thandle_t handle, toff_t offset, int whence) {
    auto& self = *static_cast<TiffFile*>(handle);
    const std::size_t base = whence == SEEK_SET   ? 0
                             : whence == SEEK_CUR ? self.offset_
                                                  : self.file_.size();
    return self.offset_ = base + offset;
  }
  static int close(thandle_t) { return 0; }
  static toff_t size(thandle_t handle) { return static_cast<TiffFile*>(handle)->file_.size(); }

  ByteView file_;
  std::size_t offset_ = 0;
  bool strict_ = false;
  char reason_[200] = {};
  /// The last member: closing it uses the others. It is a member so that it is also closed when the
  /// constructor raises.
  std::unique_ptr<TIFF, void (*)(TIFF*)> tiff_{nullptr, TIFFClose};
};

/// What the samples of a pixel mean, in files whose samples are read without libtiff's conversion.
struct Layout {
  enum class Colour { kGrey, kInvertedGrey, kRgb, kInks };

  Colour colour = Colour::kRgb;
  unsigned samples = 3;  ///< of a pixel in the file, also those that are not used
  bool has_alpha = false;
  bool multiplied = false;  ///< the colours are multiplied by alpha

  [[nodiscard]] unsigned colour_samples() const {
    return colour == Colour::kRgb ? 3 : colour == Colour::kInks ? 4 : 1;
  }
  /// True when the samples are those of a `Picture` already.
  [[nodiscard]] bool is_plain() const {
    return (colour == Colour::kGrey || colour == Colour::kRgb) && !multiplied &&
           samples == colour_samples() + (has_alpha ? 1 : 0);
  }
};

template <typename Sample>
Sample stored(Sample native) {
  if constexpr (sizeof(Sample) == 2) {
    return htobe16(native);
  } else {
    return native;
  }
}

template <typename Sample>
void divide_by_alpha(Sample* colours, unsigned count, Sample alpha) {
  constexpr unsigned long kFull = std::numeric_limits<Sample>::max();
  for (unsigned i = 0; i < count && alpha != 0; ++i) {
    const unsigned long colour = (colours[i] * kFull + alpha / 2) / alpha;
    colours[i] = static_cast<Sample>(std::min(colour, kFull));
  }
}

/// Converts a row of samples in the machine's byte order to a row of a `Picture`.
template <typename Sample>
void convert_row(const Sample* in, Sample* out, std::uint32_t width, const Layout& layout) {
  constexpr Sample kFull = std::numeric_limits<Sample>::max();
  if (layout.is_plain()) {
    std::transform(in, in + std::size_t{width} * layout.samples, out, stored<Sample>);
    return;
  }
  const unsigned colours = layout.colour == Layout::Colour::kInks ? 3 : layout.colour_samples();
  for (std::uint32_t x = 0; x < width; ++x, in += layout.samples) {
    if (layout.colour == Layout::Colour::kInks) {
      const Sample light[4] = {
          static_cast<Sample>(kFull - in[0]), static_cast<Sample>(kFull - in[1]),
          static_cast<Sample>(kFull - in[2]), static_cast<Sample>(kFull - in[3])};
      rgb_of_cmyk(light, out);
    } else {
      std::copy_n(in, colours, out);
    }
    const Sample alpha = layout.has_alpha ? in[layout.colour_samples()] : kFull;
    if (layout.multiplied) {
      divide_by_alpha(out, colours, alpha);
    }
    if (layout.colour == Layout::Colour::kInvertedGrey) {
      out[0] = static_cast<Sample>(kFull - out[0]);
    }
    for (unsigned i = 0; i < colours; ++i) {
      out[i] = stored(out[i]);
    }
    out += colours;
    if (layout.has_alpha) {
      *out++ = stored(alpha);
    }
  }
}

/// Reads files with samples of 8 or 16 bits in strips or tiles, in one plane or several. It holds
/// the rows of one strip, or of one row of tiles, at a time.
class TiffRows final : public PictureSource {
 public:
  TiffRows(std::unique_ptr<TiffFile> file, Picture picture, const Layout& layout)
      : file_(std::move(file)), layout_(layout) {
    picture_ = std::move(picture);
    TIFF* const tiff = file_->get();
    tiled_ = TIFFIsTiled(tiff) != 0;
    if (tiled_) {
      block_width_ = file_->field<std::uint32_t>(TIFFTAG_TILEWIDTH, 0);
      block_height_ = file_->field<std::uint32_t>(TIFFTAG_TILELENGTH, 0);
    } else {
      block_width_ = picture_.width;
      block_height_ =
          std::min(file_->field<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, 0), picture_.height);
    }
    const bool planes = file_->field<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) ==
                        PLANARCONFIG_SEPARATE;
    planes_ = planes ? layout_.samples : 1;
    sample_bytes_ = picture_.bits / 8;
    pixel_bytes_ = std::size_t{layout_.samples} * sample_bytes_;
    const std::uint64_t block =
        tiled_ ? TIFFTileSize64(tiff) : TIFFVStripSize64(tiff, block_height_);
    const std::uint64_t band =
        std::uint64_t{picture_.width} * pixel_bytes_ * std::min(block_height_, picture_.height);
    file_->check(block_width_ != 0 && block_height_ != 0 && block != 0);
    if (block > kMostHeldBytes || band > kMostHeldBytes) {
      throw ImageError("the image needs more memory than the limit");
    }
    block_.resize(block);
    band_.resize(band);
  }

  void read(unsigned char* row) override {
    const std::uint32_t line = next_ % block_height_;
    if (line == 0) {
      read_band();
    }
    const unsigned char* const from =
        band_.data() + std::size_t{line} * picture_.width * pixel_bytes_;
    if (sample_bytes_ == 1) {
      convert_row(from, row, picture_.width, layout_);
    } else {
      convert_row(reinterpret_cast<const std::uint16_t*>(from),
                  reinterpret_cast<std::uint16_t*>(row), picture_.width, layout_);
    }
    ++next_;
  }

 private:
  void read_band() {
    const std::uint32_t rows = std::min(block_height_, picture_.height - next_);
    for (unsigned plane = 0; plane < planes_; ++plane) {
      for (std::uint32_t x = 0; x < picture_.width; x += block_width_) {
        read_block(x, rows, static_cast<std::uint16_t>(plane));
        place_block(x, rows, plane);
        if (block_width_ >= picture_.width - x) {
          break;
        }
      }
    }
  }

  void read_block(std::uint32_t x, std::uint32_t rows, std::uint16_t plane) {
    TIFF* const tiff = file_->get();
    const tmsize_t wanted =
        tiled_ ? static_cast<tmsize_t>(block_.size()) : TIFFVStripSize(tiff, rows);
    const tmsize_t got = tiled_
                             ? TIFFReadEncodedTile(tiff, TIFFComputeTile(tiff, x, next_, 0, plane),
                                                   block_.data(), wanted)
                             : TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, next_, plane),
                                                    block_.data(), wanted);
    file_->check(got == wanted);
  }

  void place_block(std::uint32_t x, std::uint32_t rows, unsigned plane) {
    const std::size_t columns = std::min(block_width_, picture_.width - x);
    const std::size_t step = planes_ == 1 ? pixel_bytes_ : sample_bytes_;
    for (std::uint32_t y = 0; y < rows; ++y) {
      const unsigned char* from = block_.data() + std::size_t{y} * block_width_ * step;
      unsigned char* to = band_.data() + (std::size_t{y} * picture_.width + x) * pixel_bytes_;
      if (planes_ == 1) {
        std::memcpy(to, from, columns * step);
        continue;
      }
      to += plane * sample_bytes_;
      for (std::size_t i = 0; i < columns; ++i, from += step, to += pixel_bytes_) {
        std::memcpy(to, from, step);
      }
    }
  }

  std::unique_ptr<TiffFile> file_;
  Layout layout_;
  bool tiled_ = false;
  std::uint32_t block_width_ = 0;
  std::uint32_t block_height_ = 0;
  unsigned planes_ = 1;
  std::size_t sample_bytes_ = 1;
  std::size_t pixel_bytes_ = 3;
  std::vector<unsigned char> block_;
  std::vector<unsigned char> band_;
  std::uint32_t next_ = 0;
};

/// Finds the layout of the samples. False when libtiff has to convert them: palettes, bi-level,
/// fax, YCbCr, Lab.
bool find_layout(const TiffFile& file, unsigned bits, Layout& layout) {
  const auto format = file.field<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  layout.samples = file.field<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
  switch (file.field<std::uint16_t>(TIFFTAG_PHOTOMETRIC, std::uint16_t{0xffff})) {
    case PHOTOMETRIC_MINISBLACK:
      layout.colour = Layout::Colour::kGrey;
      break;
    case PHOTOMETRIC_MINISWHITE:
      layout.colour = Layout::Colour::kInvertedGrey;
      break;
    case PHOTOMETRIC_RGB:
      layout.colour = Layout::Colour::kRgb;
      break;
    case PHOTOMETRIC_SEPARATED:
      layout.colour = Layout::Colour::kInks;
      break;
    default:
      return false;
  }
  constexpr unsigned kMostSamples = 16;
  if ((bits != 8 && bits != 16) || format != SAMPLEFORMAT_UINT ||
      layout.samples < layout.colour_samples() || layout.samples > kMostSamples) {
    return false;
  }
  std::uint16_t count = 0;
  std::uint16_t* extra = nullptr;
  TIFFGetFieldDefaulted(file.get(), TIFFTAG_EXTRASAMPLES, &count, &extra);
  if (count > 0 && layout.samples > layout.colour_samples()) {
    layout.multiplied = extra[0] == EXTRASAMPLE_ASSOCALPHA;
    layout.has_alpha = layout.multiplied || extra[0] == EXTRASAMPLE_UNASSALPHA;
  }
  return true;
}

/// The picture, converted to 8 bits by libtiff.
std::unique_ptr<PictureSource> converted(TiffFile& file, Picture picture) {
  if (std::uint64_t{picture.width} * picture.height * sizeof(std::uint32_t) > kMostHeldBytes) {
    throw ImageError("the image needs more memory than the limit");
  }
  std::vector<std::uint32_t> raster(std::size_t{picture.width} * picture.height);
  TIFFRGBAImage image;
  char reason[1024] = {};
  if (TIFFRGBAImageBegin(&image, file.get(), 1, reason) == 0) {
    file.check(true);
    throw ImageError(reason);
  }
  image.req_orientation = image.orientation;  // do not turn it: `upright` does that for all formats
  const bool grey =
      image.photometric == PHOTOMETRIC_MINISBLACK || image.photometric == PHOTOMETRIC_MINISWHITE;
  const bool alpha = image.alpha != 0;
  const int good = TIFFRGBAImageGet(&image, raster.data(), picture.width, picture.height);
  TIFFRGBAImageEnd(&image);
  file.check(good != 0);

  const unsigned colours = grey ? 1 : 3;
  picture.channels = colours + (alpha ? 1 : 0);
  picture.bits = 8;
  auto held = std::make_unique<HeldPicture>(std::move(picture));
  unsigned char* out = held->row(0);
  for (const std::uint32_t pixel : raster) {
    unsigned char rgba[4] = {
        static_cast<unsigned char>(TIFFGetR(pixel)), static_cast<unsigned char>(TIFFGetG(pixel)),
        static_cast<unsigned char>(TIFFGetB(pixel)), static_cast<unsigned char>(TIFFGetA(pixel))};
    if (alpha) {
      divide_by_alpha(rgba, 3, rgba[3]);
    }
    out = std::copy_n(rgba, colours, out);
    if (alpha) {
      *out++ = rgba[3];
    }
  }
  return held;
}

}  // namespace

std::unique_ptr<PictureSource> open_tiff(ByteView bytes) {
  auto file = std::make_unique<TiffFile>(bytes);
  Picture picture;
  TIFFGetField(file->get(), TIFFTAG_IMAGEWIDTH, &picture.width);
  TIFFGetField(file->get(), TIFFTAG_IMAGELENGTH, &picture.height);
  check_size(picture.width, picture.height);
  picture.bits = file->field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
  const unsigned orientation = file->field<std::uint16_t>(TIFFTAG_ORIENTATION, 1);
  picture.orientation = orientation >= 1 && orientation <= 8 ? orientation : 1;
  std::uint32_t length = 0;
  void* profile = nullptr;
  if (TIFFGetField(file->get(), TIFFTAG_ICCPROFILE, &length, &profile) != 0) {
    const auto* const start = static_cast<const unsigned char*>(profile);
    picture.profile.assign(start, start + length);
  }
  file->begin_pixels();
  Layout layout;
  if (!find_layout(*file, picture.bits, layout)) {
    return converted(*file, std::move(picture));
  }
  const bool grey = layout.colour_samples() == 1;
  picture.channels = (grey ? 1 : 3) + (layout.has_alpha ? 1 : 0);
  return std::make_unique<TiffRows>(std::move(file), std::move(picture), layout);
}

}  // namespace quoll::image_helper
