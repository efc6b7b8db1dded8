#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "quoll/linux/posix/unique_fd.h"
#include "quoll/platform/images.h"

namespace quoll::image_helper {

/// How long the helper may work on one picture.
inline constexpr std::chrono::milliseconds kTimeLimit = std::chrono::seconds(30);

/// Images that are read and written by a helper process, one a request, which gets bytes and gives
/// bytes and is trusted with nothing else. `helper` is the program's absolute path; it is started
/// when an image comes, not before. A helper that is missing, dies, or takes longer than
/// `time_limit` gives nothing, and the log says why.
[[nodiscard]] std::shared_ptr<platform::Images> make_images(
    std::string helper, std::chrono::milliseconds time_limit = kTimeLimit);

/// Called ten times a second while the helper works; false ends it.
using GoOn = std::function<bool()>;

/// Lets the helper at that path write a PNG file of the picture in a sealed memory file, as the
/// images above do. Answers a memory file; none when the helper cannot, and nothing is logged.
[[nodiscard]] posix::UniqueFd make_png(const std::string& helper, int picture, const GoOn& go_on);

/// Where the helper program is: what the environment's `QUOLL_IMAGE_HELPER` says, else where it is
/// installed together with the running program. To be called before the process confines itself.
[[nodiscard]] std::string helper_path();

}  // namespace quoll::image_helper
