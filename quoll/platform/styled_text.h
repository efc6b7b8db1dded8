#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/foundation/error.h"
#include "quoll/foundation/object.h"
#include "quoll/foundation/polymorphic.h"
#include "quoll/foundation/value.h"

namespace quoll::platform {

/// How a piece of text looks. An absent attribute is the reader's default.
struct TextAttributes {
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strikethrough = false;
  std::optional<std::uint32_t> colour{};      ///< 0xRRGGBB
  std::optional<std::uint32_t> background{};  ///< 0xRRGGBB
  std::string font{};                         ///< a family name; empty when absent
  double size = 0;                            ///< in points; 0 when absent
  std::string link{};                         ///< a URL's text; empty when absent
  friend bool operator==(const TextAttributes&, const TextAttributes&) = default;
};

/// A piece of text of one look.
struct TextRun {
  std::string text;
  TextAttributes attributes;
  friend bool operator==(const TextRun&, const TextRun&) = default;
};

/// Styled text: runs one after the other. Paragraphs end at a line feed. It never changes, so any
/// thread may read it.
class NSAttributedString final : public foundation::Object {
 public:
  explicit NSAttributedString(std::vector<TextRun> runs);
  /// Plain text without attributes.
  explicit NSAttributedString(std::string_view text);

  /// `string`: the text of all runs.
  [[nodiscard]] std::string string() const { return text_; }
  /// In bytes.
  [[nodiscard]] std::size_t length() const { return text_.size(); }
  [[nodiscard]] std::vector<TextRun> runs() const { return runs_; }

  /// `dataFromRange:documentAttributes:error:` with the whole range and
  /// `NSDocumentTypeDocumentAttribute` = `NSHTMLTextDocumentType`: a whole HTML document in UTF-8;
  /// none when the conversion failed.
  [[nodiscard]] std::optional<foundation::Bytes> html_document() const;

  [[nodiscard]] std::string_view class_name() const override { return "NSAttributedString"; }
  [[nodiscard]] std::string description() const override { return text_; }
  [[nodiscard]] bool isEqual(const foundation::Object* other) const override;

 private:
  std::vector<TextRun> runs_;
  std::string text_;
};

/// Styled text from HTML and back. Any thread may call.
class StyledText : public foundation::Polymorphic {
 public:
  /// The text of an HTML document or fragment; null when it cannot be read or is not UTF-8. The log
  /// says why.
  [[nodiscard]] virtual std::shared_ptr<NSAttributedString> from_html(std::string_view html) = 0;

  /// A whole HTML document in UTF-8; none when that fails. The log says why.
  [[nodiscard]] virtual std::optional<foundation::Bytes> to_html(
      const NSAttributedString& text) = 0;
};

}  // namespace quoll::platform
