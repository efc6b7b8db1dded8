#include "apps/share/request/media_type.h"

#include <algorithm>
#include <array>

#include "quoll/foundation/text.h"

namespace quoll::share {

namespace {

struct Ending {
  std::string_view media_type;
  std::string_view extension;
};

constexpr std::array kEndings{
    Ending{"text/plain", "txt"},        Ending{"text/html", "html"},
    Ending{"text/css", "css"},          Ending{"text/csv", "csv"},
    Ending{"text/calendar", "ics"},     Ending{"text/vcard", "vcf"},
    Ending{"text/x-vcard", "vcf"},      Ending{"text/markdown", "md"},
    Ending{"text/rtf", "rtf"},          Ending{"text/xml", "xml"},
    Ending{"text/javascript", "js"},    Ending{"application/xml", "xml"},
    Ending{"application/json", "json"}, Ending{"application/pdf", "pdf"},
    Ending{"application/rtf", "rtf"},   Ending{"application/zip", "zip"},
    Ending{"application/gzip", "gz"},   Ending{"application/xhtml+xml", "xhtml"},
    Ending{"image/png", "png"},         Ending{"image/jpeg", "jpg"},
    Ending{"image/gif", "gif"},         Ending{"image/tiff", "tiff"},
    Ending{"image/webp", "webp"},       Ending{"image/svg+xml", "svg"},
    Ending{"image/bmp", "bmp"},         Ending{"image/heic", "heic"},
    Ending{"image/avif", "avif"},       Ending{"image/x-icon", "ico"},
    Ending{"audio/mpeg", "mp3"},        Ending{"audio/ogg", "ogg"},
    Ending{"audio/wav", "wav"},         Ending{"video/mp4", "mp4"},
    Ending{"video/webm", "webm"},       Ending{"message/rfc822", "eml"},
};

}  // namespace

std::string_view extension_of_media_type(std::string_view media_type) {
  const auto* const found =
      std::find_if(kEndings.begin(), kEndings.end(),
                   [&](const Ending& ending) { return ending.media_type == media_type; });
  return found == kEndings.end() ? std::string_view() : found->extension;
}

std::string_view media_type_of_bytes(std::string_view beginning) {
  constexpr std::size_t kLookedAt = std::size_t{64} * 1024;
  beginning = beginning.substr(0, kLookedAt);
  if (beginning.starts_with("%PDF-")) {
    return "application/pdf";
  }
  if (beginning.starts_with("PK\x03\x04")) {
    return "application/zip";
  }
  if (beginning.starts_with("\x1F\x8B")) {
    return "application/gzip";
  }
  const bool is_text = beginning.find('\0') == std::string_view::npos &&
                       foundation::is_utf8(foundation::whole_characters(beginning));
  return is_text ? "text/plain" : "";
}

}  // namespace quoll::share
