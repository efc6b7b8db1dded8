#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/linux/xml/look.h"
#include "quoll/platform/styled_text.h"

namespace quoll::xml {

/// Lays out the text of a document as lines, as a browser would: white space is joined, lines break
/// where blocks meet, and a break at the end of a block shows nothing. Line feeds are written only
/// once something follows them.
class RunBuilder {
 public:
  /// Text whose white space is joined, and dropped at both ends of a line.
  void text(std::string_view text, const Look& look);
  /// Text that stands as written; its line feeds break the line.
  void preserved_text(std::string_view text, const Look& look);
  /// Ends the line when there is something on it.
  void block_boundary();
  /// Ends the line.
  void line_break();
  /// Parts a table cell from the one before it on the same line, once there is text in it.
  void cell_boundary();
  /// What goes before the next text, such as a list item's "• "; empty for nothing. Blocks that
  /// begin between the two break no line.
  void set_marker(std::string marker);

  [[nodiscard]] std::vector<platform::TextRun> take();

 private:
  /// Without control characters, which HTML forbids.
  void visible(std::string_view text, const Look& look);
  void shown(std::string_view text, const Look& look);
  void begin_line();
  void append(std::string_view text, const Look& look);
  void start_run(const Look& look);
  void drop_trailing_blank();

  std::vector<platform::TextRun> runs_;
  /// The look of the last run.
  Look look_;
  std::string marker_;
  /// How many bytes of links the runs and lines so far repeat.
  std::size_t repeated_ = 0;
  bool line_has_text_ = false;
  bool break_pending_ = false;
  /// The last byte is a blank that goes away when the line ends here.
  bool blank_last_ = false;
};

}  // namespace quoll::xml
