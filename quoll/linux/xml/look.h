#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/platform/styled_text.h"

namespace quoll::xml {

/// A constant text that is shared, so that a hundred thousand nested elements can inherit it
/// without a copy.
class SharedText {
 public:
  SharedText() = default;
  explicit SharedText(std::string_view text)
      : held_(text.empty() ? nullptr : std::make_shared<const std::string>(text)) {}

  [[nodiscard]] std::string_view view() const { return held_ ? *held_ : std::string_view(); }
  friend bool operator==(const SharedText& a, const SharedText& b) {
    return a.held_ == b.held_ || a.view() == b.view();
  }

 private:
  std::shared_ptr<const std::string> held_;
};

/// The attributes of text while a document is read; they become `platform::TextAttributes`.
struct Look {
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strikethrough = false;
  std::optional<std::uint32_t> colour;
  std::optional<std::uint32_t> background;
  double size = 0;
  SharedText font;
  SharedText link;
  friend bool operator==(const Look&, const Look&) = default;
};

/// What an element passes on to the elements inside it.
struct Inherited {
  Look look;
  /// Nothing inside is shown.
  bool hidden = false;
  /// White space is kept as it is written.
  bool preserved = false;
  /// No-break blanks stand for ordinary ones (see `kBlanksClass`).
  bool blanks = false;
  /// The element itself leaves no space below it.
  bool close = false;
};

}  // namespace quoll::xml
