#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quoll/linux/xml/look.h"
#include "quoll/linux/xml/run_builder.h"

namespace quoll::xml {

/// The names of all elements and attributes that a document reader knows, in lower case.
[[nodiscard]] std::vector<std::string_view> known_names();

/// Turns the elements and texts of an HTML document into styled runs, in the order in which a
/// parser reports them. Elements may be nested to any depth: no operation recurses.
class DocumentReader {
 public:
  using Attribute = std::pair<std::string_view, std::string_view>;

  /// An element begins. Its name and those of its attributes are in lower case.
  void open(std::string_view name, std::span<const Attribute> attributes);
  /// The innermost open element ends.
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
  /// The number of the next item, for each open list; `kUnordered` for a list without numbers.
  std::vector<int> lists_;
  RunBuilder builder_;
  bool first_cell_ = true;
  /// Set right after `<pre>`: a line feed there belongs to the markup and is not shown.
  bool skip_line_feed_ = false;
};

}  // namespace quoll::xml
