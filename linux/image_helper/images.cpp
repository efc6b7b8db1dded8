#include "linux/image_helper/images.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "linux/image_helper/answers.h"
#include "linux/image_helper/descriptors.h"
#include "linux/image_helper/helper_process.h"
#include "quoll/platform/log.h"

namespace quoll::image_helper {

namespace {

using foundation::Bytes;
using platform::BitmapImageFileType;

/// What the helper gave, when it is whole and not too long.
std::optional<Bytes> read_result(const Descriptor& file) {
  struct stat status = {};
  if (!is_sealed(file.get()) || fstat(file.get(), &status) != 0 || status.st_size <= 0 ||
      static_cast<std::uint64_t>(status.st_size) > kLongestResult) {
    return std::nullopt;
  }
  const Mapping result(file.get(), static_cast<std::size_t>(status.st_size));
  if (!result.good()) {
    return std::nullopt;
  }
  return Bytes(result.bytes().begin(), result.bytes().end());
}

class HelperImages final : public platform::Images {
 public:
  HelperImages(std::string helper, std::chrono::milliseconds time_limit)
      : helper_(std::move(helper)), time_limit_(time_limit) {}

  std::optional<Size> size(const Bytes& file) override {
    const std::optional<Bytes> answer = ask("size", file);
    SizeAnswer size;
    if (!answer || answer->size() != sizeof size) {
      return std::nullopt;
    }
    std::memcpy(&size, answer->data(), sizeof size);
    return Size{size.width, size.height};
  }

  std::optional<Bytes> convert(const Bytes& file, BitmapImageFileType type) override {
    return ask(type == BitmapImageFileType::NSBitmapImageFileTypePNG ? "png" : "tiff", file);
  }

 private:
  /// The helper's answer; else nothing, and a line in the log.
  std::optional<Bytes> ask(const char* wanted, const Bytes& file) {
    const Descriptor in = make_memory_file();
    const Descriptor out = make_memory_file();
    if (!in.good() || !out.good() || !fill_and_seal(in, file)) {
      platform::log("image: %@", std::strerror(errno));
      return std::nullopt;
    }
    const Outcome outcome = run_helper(helper_, wanted, in.get(), out.get(), time_limit_);
    if (!outcome.ended_well) {
      platform::log("image: %@", outcome.reason);
      return std::nullopt;
    }
    std::optional<Bytes> result = read_result(out);
    if (!result) {
      platform::log("image: %@", "the helper gave no whole result");
    }
    return result;
  }

  const std::string helper_;
  const std::chrono::milliseconds time_limit_;
};

}  // namespace

std::shared_ptr<platform::Images> make_images(std::string helper,
                                              std::chrono::milliseconds time_limit) {
  return std::make_shared<HelperImages>(std::move(helper), time_limit);
}

}  // namespace quoll::image_helper
