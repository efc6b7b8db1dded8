#include "quoll/platform/type_identifiers.h"

#include <algorithm>
#include <array>

namespace quoll::platform {

bool type_conforms_to(std::string_view type, std::string_view wanted) {
  struct Kind {
    std::string_view type;
    std::string_view parent;
  };
  constexpr std::array kKinds{
      Kind{kUTTypeFileURL, kUTTypeURL},           Kind{"public.png", kUTTypeImage},
      Kind{"public.jpeg", kUTTypeImage},          Kind{"public.tiff", kUTTypeImage},
      Kind{"com.compuserve.gif", kUTTypeImage},   Kind{"com.microsoft.bmp", kUTTypeImage},
      Kind{"org.webmproject.webp", kUTTypeImage}, Kind{"public.webp", kUTTypeImage},
      Kind{"public.heic", kUTTypeImage},
  };
  return type == wanted || std::any_of(kKinds.begin(), kKinds.end(), [&](const Kind& kind) {
           return kind.type == type && kind.parent == wanted;
         });
}

}  // namespace quoll::platform
