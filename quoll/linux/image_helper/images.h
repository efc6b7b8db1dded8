#pragma once

#include <chrono>
#include <memory>
#include <string>

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

/// Where the helper program is: what the environment's `QUOLL_IMAGE_HELPER` says, else where it is
/// installed together with the running program. To be called before the process confines itself.
[[nodiscard]] std::string helper_path();

}  // namespace quoll::image_helper
