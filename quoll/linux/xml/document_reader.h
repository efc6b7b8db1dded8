#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quoll/linux/xml/document_form.h"

namespace quoll::xml {

/// Gives the elements and texts of an HTML document, in the order in which a parser reports them,
/// to a form, with what each inherits. Elements may be nested to any depth: no operation recurses.
class DocumentReader {
 public:
  explicit DocumentReader(DocumentForm& form) : form_(form) {}

  /// An element begins. Its name and those of its attributes are in lower case.
  void open(std::string_view name, Attributes attributes);
  /// The innermost open element ends.
  void close();
  void text(std::string_view text);

  [[nodiscard]] std::size_t depth() const { return open_.size(); }

 private:
  struct Open {
    const Element* element;
    Inherited inherited;
  };

  DocumentForm& form_;
  std::vector<Open> open_;
  /// The beginning of the style sheet that is open.
  std::string sheet_;
  /// A style sheet said that paragraphs have no space between them.
  bool close_paragraphs_ = false;
  /// Set right after `<pre>`: a line feed there belongs to the markup and is not shown.
  bool skip_line_feed_ = false;
};

}  // namespace quoll::xml
