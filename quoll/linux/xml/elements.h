#pragma once

#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "quoll/linux/xml/look.h"

namespace quoll::xml {

/// What an element does to the text inside it.
enum class Role {
  kInline,
  kAnchor,
  kBody,
  kBlock,
  kParagraph,
  kQuote,
  kHidden,
  kBreak,
  kRule,
  kImage,
  kItem,
  kList,
  kPreformatted,
  kTable,
  kRow,
  kCell
};

struct Element {
  std::string_view name{};
  Role role = Role::kInline;
  void (*apply)(Look&) = nullptr;
};

using Attribute = std::pair<std::string_view, std::string_view>;
using Attributes = std::span<const Attribute>;

/// The element with this name, in lower case; one that changes nothing when the name is unknown.
/// There is one object for each element, so their addresses can be compared.
[[nodiscard]] const Element& element_named(std::string_view name);

/// True when text before, inside and after the element is on different lines.
[[nodiscard]] bool is_block(Role role);

/// The names of all elements and attributes that are read, in lower case.
[[nodiscard]] std::vector<std::string_view> known_names();

/// The value of the attribute; empty when it is absent.
[[nodiscard]] std::string_view value_of(Attributes attributes, std::string_view name);

/// The whole number in the attribute, within the limits; `absent` when there is none.
[[nodiscard]] int number_of(Attributes attributes, std::string_view name, int least, int most,
                            int absent);

/// The number of a list's first item.
[[nodiscard]] int first_number(Attributes attributes);

}  // namespace quoll::xml
