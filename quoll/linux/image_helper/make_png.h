#pragma once

#include <functional>
#include <string>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::image_helper {

/// Called ten times a second while the helper works; false ends it.
using GoOn = std::function<bool()>;

/// Lets the helper at that path write a PNG file of the picture in a sealed memory file, as the
/// images of `make_images` do. Answers a memory file; none when the helper cannot, and nothing is
/// logged.
[[nodiscard]] posix::UniqueFd make_png(const std::string& helper, int picture, const GoOn& go_on);

}  // namespace quoll::image_helper
