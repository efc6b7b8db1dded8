#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quoll/linux/xml/look.h"
#include "quoll/linux/xml/run_builder.h"

namespace quoll::xml {

/// The names of elements and attributes that a document reader looks at, in lower case.
[[nodiscard]] std::vector<std::string_view> known_names();

/// Turns the elements and texts of an HTML document, as a parser meets them, into styled runs.
/// Nothing here is recursive: elements may be nested to any depth.
class DocumentReader {
 public:
  using Attribute = std::pair<std::string_view, std::string_view>;

  /// The start of an element; name and attribute names in lower case.
  void open(std::string_view name, std::span<const Attribute> attributes);
  /// The end of the element that was opened last among those still open.
  void close();
  void text(std::string_view text);

  [[nodiscard]] std::size_t depth() const { return open_.size(); }
  [[nodiscard]] std::vector<platform::TextRun> take() { return builder_.take(); }

 private:
  enum class Role {
    kInline,
    kBlock,
    kHidden,
    kBreak,
    kImage,
    kItem,
    kList,
    kPreformatted,
    kRow,
    kCell
  };
  struct Element;
  struct Open {
    const Element* element;
    Inherited inherited;
  };
  static constexpr int kUnordered = -1;

  friend std::vector<std::string_view> known_names();
  static std::span<const Element> elements();
  static const Element& element_named(std::string_view name);
  void begin(const Element& element, const Inherited& inherited,
             std::span<const Attribute> attributes);
  void begin_list(const Element& element, std::span<const Attribute> attributes);
  void begin_item();
  void begin_cell();

  std::vector<Open> open_;
  /// The number of the next item of each open list, `kUnordered` for none.
  std::vector<int> lists_;
  RunBuilder builder_;
  bool first_cell_ = true;
  /// A line feed right after `<pre>` belongs to the markup.
  bool skip_line_feed_ = false;
};

}  // namespace quoll::xml
