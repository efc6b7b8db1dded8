#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/linux/xml/look.h"
#include "quoll/platform/styled_text.h"

namespace quoll::xml {

/// Makes runs of the text of a document, with lines as a browser shows them: white space is joined,
/// a line ends where blocks meet, and a break at the end of a block shows nothing. A line feed is
/// written only when something follows it.
class RunBuilder {
 public:
  /// Adds text. Its white space is joined, and dropped at both ends of a line.
  void text(std::string_view text, const Look& look);
  /// Adds text as it is written. Its line feeds end the line.
  void preserved_text(std::string_view text, const Look& look);
  /// Ends the line if it has text; with two breaks, an empty line follows.
  void block_boundary(int breaks = 1);
  /// Ends the line, also an empty one.
  void line_break();
  /// Begins a table cell: a tab separates its text, if it has any, from the cell before it.
  void cell_boundary();
  /// Sets what is written before the next text, such as a list item's "• "; empty for nothing.
  /// Blocks that begin before that text do not end the line. The marker takes the place of the
  /// first `hanging` bytes of what `indent` adds after this call.
  void set_marker(std::string marker, std::size_t hanging = 0);
  /// Adds to what each line begins with; `outdent` removes as many bytes.
  void indent(std::string_view more);
  void outdent(std::size_t less);

  /// Adds a word to the last line that has text, even if a block has ended behind it.
  void add_word(std::string_view word);
  /// The length in bytes of the text so far, if it all has one look.
  [[nodiscard]] std::size_t size() const { return runs_.empty() ? 0 : runs_.back().text.size(); }
  [[nodiscard]] std::vector<platform::TextRun> take();

 private:
  /// Adds text without the control characters that HTML forbids.
  void visible(std::string_view text, const Look& look);
  void begin_line();
  void end_line(int breaks);
  void append(std::string_view text, const Look& look);
  void start_run(const Look& look);
  void drop_trailing_blank();

  std::vector<platform::TextRun> runs_;
  /// The attributes of the last run.
  Look look_;
  std::string marker_;
  /// Where in the prefix the marker stands.
  std::size_t before_marker_ = 0;
  std::size_t behind_marker_ = 0;
  /// What lines begin with, and what this line began with.
  std::string prefix_;
  std::string line_prefix_;
  /// The bytes of links in the runs and lines so far, each repeat counted.
  std::size_t repeated_ = 0;
  bool line_has_text_ = false;
  bool line_begun_ = false;
  int breaks_pending_ = 0;
  /// The last byte is a blank, which is dropped if the line ends here.
  bool blank_last_ = false;
};

}  // namespace quoll::xml
