#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "quoll/foundation/value.h"

/// The reader of property lists in their three forms: XML, binary and the old text form.
namespace quoll::foundation {

/// How many values a document may hold. A value that is referred to from several places counts at
/// each of them. Keys do not count, except in a binary document, where many dictionaries may share
/// a long key: there, every 64 bytes of a key count as one value.
inline constexpr std::size_t kPropertyListValues = 4'000'000;

/// How deep lists and dictionaries may lie in one another; the root is at depth 1.
inline constexpr std::size_t kPropertyListDepth = 256;

/// The root of the document that `file` holds, whatever its kind; never null. None when the bytes
/// are not exactly one document of one of the forms, or one beyond the limits above. Time and
/// memory grow with the size of the file, whatever stands in it.
///
/// All forms: a list becomes a `List`, a dictionary a `Dictionary` in the order of the file, where
/// the last of several values for one key counts. Text is Unicode: a document with half a
/// surrogate pair, or with bytes that are not UTF-8 where it should be, is broken.
///
/// - XML is UTF-8, or UTF-16 when it begins with a byte-order mark; the declared encoding is not
///   looked at. A document type that declares anything of its own is refused, and with it every
///   entity but the five of XML. Line breaks in texts stay as they are. Integers are decimal, or
///   hexadecimal after "0x"; dates are as `date_of_exchange_text` reads them.
/// - Binary is version "bplist00". What a document refers to twice is shared in the result too. A
///   document that contains itself is broken, and so is one with anything beside the values that
///   XML has (null, sets, references of archives).
/// - The old form is UTF-8, or UTF-16 as above. Every scalar but `<0fbd77>`, which is bytes, is a
///   text. A character escaped in octal is one of U+0000 to U+01FF.
///
/// An integer beyond the largest of `Value` is read as the nearest real, one beyond 64 bits is
/// broken.
[[nodiscard]] std::optional<Value> read_property_list(std::string_view file);

/// Why a document is not read.
struct PropertyListFault {
  /// The place, counted from 1; a column is a character. Both are 0 in a binary document.
  std::size_t line = 0;
  std::size_t column = 0;
  /// A sentence without a capital and a full stop.
  std::string reason;
};

/// The same, and when there is none, why.
[[nodiscard]] std::optional<Value> read_property_list(std::string_view file,
                                                      PropertyListFault& fault);

[[nodiscard]] inline std::optional<Value> read_property_list(const Bytes& file) {
  return read_property_list(
      std::string_view(reinterpret_cast<const char*>(file.data()), file.size()));
}

}  // namespace quoll::foundation
