// Shares any text as an item that a host names, as a `data:` URL, and as bytes of some type. Each
// becomes a file that exists or a link that is a URL, or is refused in words. The content of a
// `data:` URL is read again from a new one.

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "apps/share/request/data_url.h"
#include "apps/share/request/image_signature.h"
#include "apps/share/request/media_type.h"
#include "apps/share/request/resolve_item.h"
#include "apps/share/request/resolve_link.h"
#include "fuzz/require.h"
#include "quoll/foundation/base64.h"
#include "quoll/foundation/text.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace quoll;
using foundation::NSURL;
using fuzz::require;

/// Makes a folder with awkward names the working directory, while it lives.
class InFolder {
 public:
  InFolder() : before_(std::filesystem::current_path()) {
    static const test::TemporaryFolder folder;
    static const bool made = fill(folder);
    require(made);
    std::filesystem::current_path(folder.path());
  }
  InFolder(const InFolder&) = delete;
  InFolder& operator=(const InFolder&) = delete;
  ~InFolder() { std::filesystem::current_path(before_); }

 private:
  static bool fill(const test::TemporaryFolder& folder) {
    for (const char* const name : {"a", "x y", "x%20y", "q?s#f", "bad\xFF", "http:", "tail "}) {
      folder.write(name, "x");
    }
    return std::filesystem::create_directory(folder.path("folder"));
  }

  std::filesystem::path before_;
};

void check_resolved(std::string_view given) {
  const share::ResolvedItem resolved = share::resolve_item(given);
  require((resolved.url == nullptr) != resolved.refusal.empty());
  if (!resolved.url) {
    require(resolved.refusal.find('\n') == std::string::npos);
    require(resolved.advice.find('\n') == std::string::npos);
    return;
  }
  if (resolved.url->isFileURL()) {
    struct stat status {};
    const auto path = foundation::file_system_path(resolved.url);
    require(path && path->starts_with('/'));
    require(stat(path->c_str(), &status) == 0);
    const bool is_folder = resolved.url->absoluteString().ends_with('/');
    require(is_folder ? S_ISDIR(status.st_mode) : S_ISREG(status.st_mode));
    return;
  }
  const std::string text = resolved.url->absoluteString();
  require(NSURL::URLWithString(text) != nullptr);
  const auto scheme = share::link_scheme(text);
  require(scheme && !share::is_remote_scheme(*scheme));
  require((scheme != "http" && scheme != "https" && scheme != "ftp") || resolved.url->host());
  require(std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7F; }));
}

void check_data_url(std::string_view given) {
  const auto read = share::read_data_url(given);
  if (!read) {
    return;
  }
  const std::string& type = read->media_type;
  require(!type.empty() && type.find_first_of(";, \t") == std::string::npos);
  require(std::none_of(type.begin(), type.end(), [](char c) { return c >= 'A' && c <= 'Z'; }));
  const auto again =
      share::read_data_url("data:" + type + ";base64," + foundation::base64_encode(read->bytes));
  require(again && again->media_type == type && again->bytes == read->bytes);
}

void check_bytes(std::string_view bytes) {
  const std::string_view type = share::media_type_of_bytes(bytes);
  require(type.empty() || !share::extension_of_media_type(type).empty());
  require(type != "text/plain" || bytes.find('\0') == std::string_view::npos);
  require(!foundation::is_utf8(bytes) || bytes.find('\0') != std::string_view::npos ||
          type == "text/plain" || bytes.starts_with("%PDF-") || bytes.starts_with("PK"));
  require(!share::begins_as_image(bytes) || bytes.size() >= 3);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const InFolder folder;
  check_resolved(text);
  check_data_url(text);
  check_data_url("data:" + std::string(text));
  check_bytes(text);
  return 0;
}
