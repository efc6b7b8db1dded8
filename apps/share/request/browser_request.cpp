#include "apps/share/request/browser_request.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "apps/share/request/image_signature.h"
#include "apps/share/request/resolve_link.h"
#include "quoll/foundation/base64.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/image_helper/memory_file.h"
#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {

namespace {

using Json = nlohmann::json;

/// No draft holds more, and the bytes are kept in memory until all are there.
constexpr std::size_t kMostTextBytes = std::size_t{65} << 20U;
constexpr std::size_t kMostPictureBytes = std::size_t{64} << 20U;

struct Missing {
  std::string_view code;
  const char* what;
  const char* why;
};

/// The words for what the browser could not give: they are ours, whoever wrote the frame.
constexpr std::array kMissing{
    Missing{"address", "what was chosen", "it has no address that others can open"},
    Missing{"pages", "some of the tabs", "they have no address that others can open"},
    Missing{"picture", "the picture", "the browser cannot read it; its link is shared instead"},
    Missing{"selection", "the selection", "it is too large; the page's link is shared instead"},
    Missing{"styles", "the styles of the selection",
            "they cannot be read, or are too many; the text is shared instead"},
    Missing{"tabs", "the other tabs", "the browser was not allowed to name them"},
};

bool is_shareable_link(std::string_view link) {
  constexpr std::array<std::string_view, 5> kSchemes{"http", "https", "ftp", "mailto", "tel"};
  const auto scheme = link_scheme(link);
  return scheme && std::ranges::find(kSchemes, *scheme) != kSchemes.end();
}

std::optional<std::string> bytes_of(std::string_view base64) {
  const std::size_t padding =
      base64.ends_with("==") ? 2U : static_cast<std::size_t>(base64.ends_with('='));
  const std::string_view digits = base64.substr(0, base64.size() - padding);
  if (base64.size() % 4 != 0) {
    return std::nullopt;
  }
  std::string bytes = foundation::base64_decode_digits(digits);
  // What is no digit would be skipped.
  return bytes.size() == base64.size() / 4 * 3 - padding ? std::optional(std::move(bytes))
                                                         : std::nullopt;
}

}  // namespace

/// Takes one frame in as the parser comes by its parts. Each function answers whether to go on.
class BrowserRequest::Reader final : public Json::json_sax_t {
 public:
  Step read(std::string_view json) {
    depth_ = 0;
    keys_.clear();
    const bool is_read = Json::sax_parse(json.begin(), json.end(), this);
    if (is_other_version_) {
      return Step::kOtherVersion;
    }
    if (!is_read || !has_version_) {
      return Step::kRefused;
    }
    return has_end_ ? Step::kEnd : Step::kMore;
  }

  ShareRequest request() {
    finish_picture();
    request_.is_from_menu = true;
    return std::move(request_);
  }

  bool start_object(std::size_t /*elements*/) override { return ++depth_ == 1; }
  bool end_object() override { return true; }
  bool start_array(std::size_t /*elements*/) override { return false; }
  bool end_array() override { return false; }
  bool null() override { return false; }
  bool number_integer(number_integer_t /*value*/) override { return false; }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return false; }
  bool binary(binary_t& /*value*/) override { return false; }
  bool parse_error(std::size_t /*at*/, const std::string& /*token*/,
                   const Json::exception& /*error*/) override {
    return false;
  }

  bool key(string_t& name) override {
    const bool is_new = std::ranges::find(keys_, name) == keys_.end();
    keys_.push_back(name);
    return is_new && depth_ == 1;
  }

  bool number_unsigned(number_unsigned_t value) override {
    if (!is_key("version") || has_version_) {
      return false;
    }
    has_version_ = true;
    is_other_version_ = value != kBrowserVersion;
    return !is_other_version_;
  }

  bool boolean(bool value) override {
    if (!value) {
      return false;
    }
    if (is_key("next")) {
      finish_picture();
      return true;
    }
    has_end_ = is_key("end");
    return has_end_;
  }

  bool string(string_t& text) override {
    if (is_key("picture")) {
      return add_picture(text);
    }
    text_bytes_ += text.size();
    if (text_bytes_ > kMostTextBytes || text.find('\0') != std::string::npos) {
      return false;
    }
    if (is_key("title")) {
      return !std::exchange(request_.title, text);
    }
    if (is_key("text") || is_key("html")) {
      auto& whole = is_key("text") ? request_.text : request_.html;
      whole = std::move(whole).value_or("") + text;
      return true;
    }
    return is_key("link") ? add_link(std::move(text)) : is_key("missing") && add_missing(text);
  }

 private:
  /// A picture while its bytes come.
  struct PictureBytes {
    posix::UniqueFd file;
    std::string beginning;

    [[nodiscard]] bool append(std::string_view bytes) {
      constexpr std::size_t kSignature = 16;
      if (!file) {
        file = image_helper::make_memory_file();
      }
      beginning += bytes.substr(0, kSignature - std::min(kSignature, beginning.size()));
      return file && posix::write_all(file.get(), bytes);
    }
  };

  [[nodiscard]] bool is_key(std::string_view name) const {
    return !keys_.empty() && keys_.back() == name;
  }

  bool add_link(std::string link) {
    if (is_shareable_link(link)) {
      request_.links.push_back(std::move(link));
    } else {
      request_.left_out.push_back({std::move(link), "it is no link to the net"});
    }
    return request_.links.size() + request_.left_out.size() <= kMostLinks;
  }

  bool add_missing(std::string_view code) {
    const auto* const missing = std::ranges::find(kMissing, code, &Missing::code);
    if (missing == kMissing.end()) {
      return false;
    }
    request_.left_out.push_back({missing->what, missing->why});
    return request_.left_out.size() <= kMostLinks;
  }

  bool add_picture(std::string_view base64) {
    const auto bytes = bytes_of(base64);
    picture_bytes_ += bytes ? bytes->size() : 0;
    return bytes && picture_bytes_ <= kMostPictureBytes && finished_pictures_ < kMostPictures &&
           picture_.append(*bytes);
  }

  void finish_picture() {
    PictureBytes picture = std::exchange(picture_, {});
    if (!picture.file) {
      return;
    }
    ++finished_pictures_;
    if (begins_as_image(picture.beginning)) {
      request_.descriptor_items.push_back({std::move(picture.file), "", ""});
    } else {
      request_.left_out.push_back({"the picture", "it is none that can be read"});
    }
  }

  ShareRequest request_;
  std::vector<std::string> keys_;  ///< of the frame
  int depth_ = 0;
  bool has_version_ = false;
  bool is_other_version_ = false;
  bool has_end_ = false;
  std::size_t text_bytes_ = 0;
  std::size_t picture_bytes_ = 0;
  std::size_t finished_pictures_ = 0;  ///< with those that are left out
  PictureBytes picture_;
};

BrowserRequest::BrowserRequest() : reader_(std::make_unique<Reader>()) {}
BrowserRequest::~BrowserRequest() = default;

BrowserRequest::Step BrowserRequest::take(std::string_view json) {
  return reader_->read(json);
}

ShareRequest BrowserRequest::request() {
  ShareRequest request = reader_->request();
  for (auto* const text : {&request.title, &request.text, &request.html}) {
    if (*text == "-") {  // stands for standard input, which is the browser's
      **text += ' ';
    }
  }
  return request;
}

}  // namespace quoll::share
