#include "apps/share/request/image_signature.h"

#include <algorithm>
#include <array>

namespace quoll::share {

bool begins_as_image(std::string_view bytes) {
  using std::string_view_literals::operator""sv;
  constexpr std::array kSignatures{
      "\x89PNG\r\n\x1a\n"sv, "\xFF\xD8\xFF"sv, "GIF87a"sv, "GIF89a"sv, "II*\0"sv, "MM\0*"sv,
      "II+\0\10\0"sv,        "MM\0+\0\10"sv,
  };
  const bool is_webp = bytes.starts_with("RIFF") && bytes.substr(0, 12).ends_with("WEBP");
  return is_webp || std::any_of(kSignatures.begin(), kSignatures.end(),
                                [&](std::string_view begin) { return bytes.starts_with(begin); });
}

}  // namespace quoll::share
