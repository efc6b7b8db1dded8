#pragma once

#include <memory>

#include "quoll/platform/links.h"

namespace quoll::links {

/// The finder of links for the port; never null. It takes top-level domains from the public suffix
/// list that is built into libpsl, and converts hosts in other scripts by UTS 46
/// (non-transitional).
[[nodiscard]] std::shared_ptr<platform::Links> make_links();

}  // namespace quoll::links
