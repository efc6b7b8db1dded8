#include "quoll/linux/image_helper/images.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

#include "quoll/linux/image_helper/answers.h"
#include "quoll/linux/image_helper/helper_process.h"
#include "quoll/linux/image_helper/make_png.h"
#include "quoll/linux/image_helper/memory_file.h"
#include "quoll/linux/posix/installed_file.h"
#include "quoll/platform/log.h"

namespace quoll::image_helper {

namespace {

using foundation::Bytes;
using platform::BitmapImageFileType;

/// How long a result may be, in bytes.
struct Lengths {
  std::uint64_t shortest;
  std::uint64_t longest;
};
constexpr Lengths kOfASize{sizeof(SizeAnswer), sizeof(SizeAnswer)};
constexpr Lengths kOfAFile{1, kLongestResult};
constexpr const char* kPng = "png";

/// The length of what the helper gave, when that is whole and as long as it should be.
std::optional<std::size_t> length_of(int result, const Lengths& lengths) {
  struct stat status = {};
  if (!is_sealed(result) || fstat(result, &status) != 0 || status.st_size < 0) {
    return std::nullopt;
  }
  const auto length = static_cast<std::uint64_t>(status.st_size);
  return length < lengths.shortest || length > lengths.longest ? std::nullopt
                                                               : std::optional<std::size_t>(length);
}

std::optional<Bytes> read_result(int file, const Lengths& lengths) {
  const auto length = length_of(file, lengths);
  if (!length) {
    return std::nullopt;
  }
  const Mapping result(file, *length);
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
    SizeAnswer size;
    const std::optional<Bytes> answer = ask("size", file, kOfASize);
    if (!answer) {
      return std::nullopt;
    }
    std::memcpy(&size, answer->data(), sizeof size);
    return Size{size.width, size.height};
  }

  std::optional<Bytes> convert(const Bytes& file, BitmapImageFileType type) override {
    return ask(type == BitmapImageFileType::NSBitmapImageFileTypePNG ? kPng : "tiff", file,
               kOfAFile);
  }

 private:
  /// The helper's answer; else nothing, and a line in the log.
  std::optional<Bytes> ask(const char* wanted, const Bytes& file, const Lengths& lengths) {
    const posix::UniqueFd in = make_memory_file();
    const posix::UniqueFd out = make_memory_file();
    if (!in || !out || !fill_and_seal(in.get(), file)) {
      platform::log("image: %@", std::strerror(errno));
      return std::nullopt;
    }
    const std::string fault = run_helper(helper_, wanted, in.get(), out.get(), time_limit_);
    if (!fault.empty()) {
      platform::log("image: %@", fault);
      return std::nullopt;
    }
    std::optional<Bytes> result = read_result(out.get(), lengths);
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

posix::UniqueFd make_png(const std::string& helper, int picture, const GoOn& go_on) {
  posix::UniqueFd out = make_memory_file();
  const bool is_made = out &&
                       run_helper(helper, kPng, picture, out.get(), kTimeLimit, go_on).empty() &&
                       length_of(out.get(), kOfAFile);
  return is_made ? std::move(out) : posix::UniqueFd();
}

std::string helper_path() {
  const char* const named = ::secure_getenv("QUOLL_IMAGE_HELPER");
  return named != nullptr && *named != '\0'
             ? named
             : posix::installed_file(posix::InstalledFolder::kHelpers, "quoll-image-helper");
}

}  // namespace quoll::image_helper
