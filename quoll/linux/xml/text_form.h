#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quoll/linux/xml/document_form.h"
#include "quoll/linux/xml/run_builder.h"

namespace quoll::xml {

/// A document as lines of text. They are either styled, or the plain text of a mail: paragraphs
/// with an empty line between them, "> " before quotes, items indented. Cells have a tab between
/// them.
class TextForm final : public DocumentForm {
 public:
  enum class Kind { kStyled, kPlain };
  explicit TextForm(Kind kind) : plain_(kind == Kind::kPlain) {}

  void begin(const Element& element, const Inherited& inherited, Attributes attributes) override;
  void end(const Element& element) override;
  void text(std::string_view text, const Inherited& inherited) override;

  /// Adds a word to the last line, with a blank before it.
  void add_word(std::string_view word) { builder_.add_word(word); }
  /// What follows begins a line of its own.
  void end_line() { builder_.block_boundary(); }
  /// Adds a paragraph that is in no list and no quote.
  void add_paragraph(std::string_view text);

  /// The length of the plain text in bytes.
  [[nodiscard]] std::size_t size() const { return builder_.size(); }
  [[nodiscard]] std::vector<platform::TextRun> take_runs() { return builder_.take(); }
  /// The plain text. It ends with a line feed, if it is not empty.
  [[nodiscard]] std::string take_text();

 private:
  static constexpr int kUnordered = -1;

  void boundary(int breaks) { builder_.block_boundary(plain_ ? breaks : 1); }
  /// The look of text: none in a plain text.
  [[nodiscard]] const Look& shown(const Inherited& inherited) const;
  void begin_item();
  void begin_cell();
  void indent(std::string_view more);

  const bool plain_;
  /// The number of the next item, for each open list; `kUnordered` for a list without numbers.
  std::vector<int> lists_;
  /// What each open item and quote added to the beginning of lines, in bytes.
  std::vector<std::size_t> indents_;
  std::size_t indented_ = 0;
  RunBuilder builder_;
  bool first_cell_ = true;
};

}  // namespace quoll::xml
