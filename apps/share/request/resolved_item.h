#pragma once

#include <memory>
#include <string>

#include "quoll/foundation/nsurl.h"

namespace quoll::share {

/// The URL that a text stands for: a file URL of a file that can be read, or of
/// a folder and with "/" at its end, or a link. Without one,
/// why not, in words that follow a colon.
struct ResolvedItem {
  std::shared_ptr<foundation::NSURL> url;
  std::string refusal;
  std::string advice{};  ///< what to do about it; empty when there is nothing to say
};

}  // namespace quoll::share
