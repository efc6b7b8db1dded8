// Runs an image helper that may do anything: a short or long result, not sealed, sealed
// differently, changed later, none; text on standard error, any exit status, a signal. The program
// that asked gets the result only when the helper ended well and sealed it as agreed, and then
// exactly as it was written. Otherwise it gets nothing and logs one line. No descriptor and no
// process is left over, and the image is unchanged.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>

#include "fuzz/helper_steps.h"
#include "fuzz/require.h"
#include "quoll/linux/image_helper/answers.h"
#include "quoll/linux/image_helper/images.h"
#include "quoll/platform/desktop.h"
#include "tests/support/recorders.h"

namespace {

using namespace quoll;
using foundation::Bytes;
using fuzz::HelperStep;
using fuzz::require;

/// The expected outcome of a script.
class Expected {
 public:
  explicit Expected(const Bytes& script) {
    for (std::size_t at = 0; at + 1 < script.size() && !ended_; at += 2) {
      do_step(fuzz::helper_step(script[at]), script[at + 1]);
    }
  }

  [[nodiscard]] std::optional<Bytes> result() const {
    return good_ && seals_ == kAllSeals && !result_.empty() && !is_far_ ? std::optional(result_)
                                                                        : std::nullopt;
  }

 private:
  static constexpr int kAllSeals = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

  void do_step(HelperStep step, unsigned char value) {
    switch (step) {
      case HelperStep::kWrite:
        write(value);
        break;
      case HelperStep::kWriteFarAway:
        is_far_ = is_far_ || (seals_ & (F_SEAL_WRITE | F_SEAL_GROW)) == 0;
        break;
      case HelperStep::kResize:
        resize(std::size_t{value} * 4);
        break;
      case HelperStep::kSeal:
        if ((seals_ & F_SEAL_SEAL) == 0) {
          seals_ |= value % 2 == 0 ? kAllSeals : value % 16;
        }
        break;
      case HelperStep::kSay:
      case HelperStep::kChangeTheImage:
        break;
      case HelperStep::kEnd:
        good_ = value == 0;
        ended_ = true;
        break;
      case HelperStep::kDie:
        good_ = false;
        ended_ = true;
        break;
    }
  }

  void resize(std::size_t size) {
    const bool shrinks = is_far_ || size < result_.size();
    if (size == result_.size() && !is_far_) {
      return;
    }
    if ((seals_ & (shrinks ? F_SEAL_SHRINK : F_SEAL_GROW)) == 0) {
      result_.resize(size);
      is_far_ = false;
    }
  }

  void write(std::size_t length) {
    if ((seals_ & F_SEAL_WRITE) != 0) {
      return;
    }
    // A file that must not grow takes what fits.
    const bool fits = (seals_ & F_SEAL_GROW) == 0 || is_far_;
    const std::size_t room = result_.size() > place_ ? result_.size() - place_ : 0;
    const std::size_t written = fits ? length : std::min(length, room);
    if (written > 0) {
      result_.resize(std::max(result_.size(), place_ + written));
    }
    for (std::size_t i = 0; i < written; ++i) {
      result_[place_++] = static_cast<unsigned char>(i);
    }
  }

  Bytes result_;
  std::size_t place_ = 0;
  int seals_ = 0;
  bool good_ = true;
  bool ended_ = false;
  bool is_far_ = false;
};

std::size_t open_descriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

void check_log(const test::RecordingLog& log, std::size_t before, bool answered) {
  const auto lines = log.lines();
  require(lines.size() == before + (answered ? 0 : 1));
  require(answered || (lines.back().starts_with("image: ") && lines.back().size() <= 600 &&
                       lines.back().find('\n') == std::string::npos));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kLongestScript = 1024;
  const Bytes script(data, data + std::min(size, kLongestScript));
  const auto log = std::make_shared<test::RecordingLog>();
  const platform::ScopedDesktop desktop({.log = log});
  const auto images = image_helper::make_images(QUOLL_FUZZ_HELPER);
  const Expected expected(script);
  const std::size_t descriptors = open_descriptors();

  const auto result = expected.result();
  const auto type = platform::BitmapImageFileType::NSBitmapImageFileTypePNG;
  require(images->convert(script, type) == result);
  check_log(*log, 0, result.has_value());

  image_helper::SizeAnswer answer;
  const std::size_t lines = log->lines().size();
  const bool is_size = result && result->size() == sizeof answer;
  const auto size_given = images->size(script);
  require(size_given.has_value() == is_size);
  if (is_size) {
    std::memcpy(&answer, result->data(), sizeof answer);
    require(size_given->width == answer.width && size_given->height == answer.height);
  }
  check_log(*log, lines, is_size);
  require(open_descriptors() == descriptors);
  require(waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD);
  return 0;
}
