#pragma once

#include <string>

#include "quoll/linux/xml/look.h"

namespace quoll::xml {

/// The tags around the text of a block that give it its look. The anchor is the outermost; it stays
/// open while only the look changes.
class InlineTags {
 public:
  /// Opens and closes tags so that what is written to `out` next has this look, in a block whose
  /// own is `around`. `preserved` tells whether white space is kept.
  void switch_to(std::string& out, Look look, bool preserved, const Look& around,
                 bool around_preserved);
  /// Closes all tags.
  void close(std::string& out);

 private:
  void open(std::string& out, Look around, bool around_preserved);
  void nest(std::string& out, std::string_view tag, std::string_view style = {});

  Look look_;
  bool preserved_ = false;
  bool open_ = false;
  /// The end tags of what is inside the anchor.
  std::string end_;
};

}  // namespace quoll::xml
