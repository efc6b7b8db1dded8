#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "apps/share/request/share_request.h"

namespace quoll::share {

/// What the extension of a browser asks for, put together from the JSON of its frames. It takes a
/// title, texts, HTML, links and the bytes of pictures. Nothing that it takes is ever looked up on
/// the disk: no path and no file URL becomes an item.
///
/// Each frame is one object with any of these keys and no others; no value holds another:
///
///     version  1, in the first frame and in it alone
///     title    a text, once
///     text     a piece of the text; so is "html" of the HTML
///     link     one link of `http`, `https`, `ftp`, `mailto` or `tel`
///     picture  a piece of a picture's bytes in Base64
///     next     true: the next piece belongs to another picture
///     missing  what the browser could not give: "address", "pages", "picture",
///              "selection", "styles", "tabs"
///     end      true, in the last frame
class BrowserRequest {
 public:
  BrowserRequest();
  BrowserRequest(const BrowserRequest&) = delete;
  BrowserRequest& operator=(const BrowserRequest&) = delete;
  ~BrowserRequest();

  enum class Step { kMore, kEnd, kOtherVersion, kRefused };
  /// Takes a frame. After anything but `kMore` there shall be no other.
  [[nodiscard]] Step take(std::string_view json);

  /// What the frames asked for, after `kEnd`; once.
  [[nodiscard]] ShareRequest request();

 private:
  class Reader;
  std::unique_ptr<Reader> reader_;
};

/// Changed when an older program would misread what the extension says.
inline constexpr int kBrowserVersion = 1;
/// More than a window can have tabs.
inline constexpr std::size_t kMostLinks = 10'000;
/// As many pictures, each of which needs a descriptor.
inline constexpr std::size_t kMostPictures = 100;

}  // namespace quoll::share
