#pragma once

#include <string_view>

#include "quoll/linux/xml/elements.h"
#include "quoll/linux/xml/look.h"

namespace quoll::xml {

/// What a document is turned into. It is told of elements and texts in their order, but of nothing
/// that is hidden.
class DocumentForm {
 public:
  DocumentForm() = default;
  DocumentForm(const DocumentForm&) = delete;
  DocumentForm& operator=(const DocumentForm&) = delete;
  virtual ~DocumentForm() = default;

  /// `inherited` is what the element passes on.
  virtual void begin(const Element& element, const Inherited& inherited, Attributes attributes) = 0;
  /// The innermost element that has begun ends.
  virtual void end(const Element& element) = 0;
  /// A piece of text, with its white space. `inherited` is that of the element around it.
  virtual void text(std::string_view text, const Inherited& inherited) = 0;
  /// True when the form takes no more: the rest of the document need not be read.
  [[nodiscard]] virtual bool is_full() const { return false; }
};

}  // namespace quoll::xml
