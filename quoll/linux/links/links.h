#pragma once

#include <memory>

#include "quoll/platform/links.h"

namespace quoll::links {

/// The finder of links behind the port: top-level domains are those of the public suffix list that
/// is built into its library, hosts in other scripts are read as UTS 46 says (non-transitional).
[[nodiscard]] std::shared_ptr<platform::Links> make_links();

}  // namespace quoll::links
