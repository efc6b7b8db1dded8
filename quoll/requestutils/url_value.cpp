#include "quoll/requestutils/url_value.h"

#include "quoll/foundation/path.h"
#include "quoll/platform/files.h"

namespace quoll::RequestUtils {

std::shared_ptr<foundation::NSURL> URLValue(std::string_view text) {
  return foundation::is_absolute_path(text) ? platform::fileURLWithPath(text)
                                            : foundation::NSURL::URLWithString(text);
}

}  // namespace quoll::RequestUtils
