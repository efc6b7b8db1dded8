#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/polymorphic.h"

namespace quoll::platform {

/// The type of check that a detector is made for, under the platform's number; links are the only
/// one that is asked for.
inline constexpr std::uint64_t NSTextCheckingTypeLink = 32;

/// `NSDataDetector` for `NSTextCheckingTypeLink`: the finder of links in free text. Any thread may
/// call.
class Links : public foundation::Polymorphic {
 public:
  /// The links in `text`, in the order in which they occur, each as the absolute text of its URL:
  /// with a scheme, and with "<", ">" and "'" percent-encoded. Time grows with the length of the
  /// text only, whatever stands in it.
  [[nodiscard]] virtual std::vector<std::string> find(std::string_view text) = 0;
};

}  // namespace quoll::platform
