#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quoll/linux/xml/document_form.h"
#include "quoll/linux/xml/inline_tags.h"

namespace quoll::xml {

/// A document as the HTML of a mail: blocks, tables, lists, quotes, pictures of the same message,
/// and text with its look. Every tag is written here, from what was understood; nothing is copied.
/// What stands in the wrong place gets the elements that are missing around it, so any parser reads
/// the blocks that were meant, and reading the result gives the same result.
class MailHtml final : public DocumentForm {
 public:
  MailHtml();

  void begin(const Element& element, const Inherited& inherited, Attributes attributes) override;
  void end(const Element& element) override;
  void text(std::string_view text, const Inherited& inherited) override;

  /// What follows begins a line of its own.
  void end_line();

  /// The length so far in bytes.
  [[nodiscard]] std::size_t size() const { return out_.size(); }
  /// The whole document, with `last_line` at its end unless it is empty.
  [[nodiscard]] std::string take(std::string_view last_line);

 private:
  /// What a block is to the things inside it. `kLine` holds text only. To `kEndedItem`, which is an
  /// item after its end tag, only a list may be added: some documents write a list that belongs to
  /// an item behind it.
  enum class Kind { kFlow, kLine, kList, kItem, kEndedItem, kTable, kRow, kCell, kText };
  struct Block {
    Kind kind;
    std::string_view tag;
    /// The look of text in it, and whether its white space is kept.
    Look look{};
    bool preserved = false;
    /// Ends when something comes that does not fit.
    bool gives_way = false;
    std::uint64_t number = 0;
  };

  static bool fits(Kind parent, Kind child);
  static Kind missing(Kind parent, Kind child);
  static Kind kind_of(const Element& element);
  Block& top() { return blocks_.back(); }

  void open(const Element& element, const Inherited& inherited, Attributes attributes);
  void give_way(Kind child);
  void make_room(Kind child);
  /// A block as it is inside the top one when it has no style.
  Block inside(Kind kind, std::string_view tag);
  void push(Block block, std::string_view attributes);
  void close_block();
  void begin_line();
  void begin_line_behind_block();
  void line_break(const Inherited& inherited);
  void picture(const Inherited& inherited, Attributes attributes);
  void words(std::string_view text, const Look& look);

  /// Texts and pictures are written after a call of this.
  void begin_inline(const Look& look, bool preserved);
  /// Writes what was put off until something comes in this line.
  void begin_content();
  void switch_to(const Look& look, bool preserved);

  std::string out_;
  std::vector<Block> blocks_;
  /// The block that each open element became, by its depth and number; 0 when it became none.
  std::vector<std::pair<std::size_t, std::uint64_t>> owned_;
  std::uint64_t last_number_ = 0;

  InlineTags tags_;
  bool line_has_content_ = false;
  bool break_pending_ = false;
  bool blank_pending_ = false;
  Look blank_look_;
};

}  // namespace quoll::xml
