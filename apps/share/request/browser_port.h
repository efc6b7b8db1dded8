#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quoll::share {

/// The conversation with the extension of a browser, which the browser passes on in frames: a
/// length of four bytes in the order of this machine, and as many bytes of JSON. When the browser
/// goes away, nothing is said any more, and the share goes on.
class BrowserPort {
 public:
  BrowserPort(int input, int output) : input_(input), output_(output) {}

  enum class Received { kFrame, kEnd, kDamaged };
  /// Waits for the next frame and puts its JSON into `frame`. A frame that is longer than
  /// `kLongestFrame` is damaged, and so is one that ends too early; nothing is read behind it.
  [[nodiscard]] Received receive(std::string& frame) const;

  /// From 0 to 100. A number that was just sent is not sent again.
  void tell_progress(int percent);
  /// That another share is not finished yet.
  void tell_waiting();
  /// What came of the share, once, in the words of a notification: both empty when all went well.
  void tell_end(bool is_opened, std::string_view title, std::string_view body);

 private:
  void say(std::string_view json);

  int input_;
  int output_;
  bool has_listener_ = true;
  int percent_ = -1;
};

/// The extension sends pieces of 256 Ki characters; a browser lets pass 64 MiB and more.
inline constexpr std::size_t kLongestFrame = std::size_t{16} << 20U;

}  // namespace quoll::share
