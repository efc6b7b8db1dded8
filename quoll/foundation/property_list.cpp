#include "quoll/foundation/property_list.h"

#include <algorithm>
#include <string>

#include "quoll/foundation/property_list_forms.h"
#include "quoll/foundation/text.h"
#include "quoll/foundation/unicode.h"

namespace quoll::foundation {

namespace {

/// In the old form "<" begins bytes, whose digits can be none of these letters.
bool is_xml(std::string_view text) {
  while (!text.empty() && property_list::is_blank(text.front())) {
    text.remove_prefix(1);
  }
  return text.starts_with("<?") || text.starts_with("<!") || text.starts_with("<p");
}

/// How many bytes in front are characters.
std::size_t length_of_characters(std::string_view bytes) {
  std::size_t length = 0;
  while (const std::size_t next = first_character(bytes.substr(length)).size()) {
    length += next;
  }
  return length;
}

PropertyListFault fault_in(std::string_view text, const property_list::Failure& failure) {
  constexpr unsigned kRest = 0xC0;
  const std::string_view before = text.substr(0, failure.position);
  const std::string_view line = before.substr(before.rfind('\n') + 1);
  const auto begins = [](char c) { return (static_cast<unsigned char>(c) & kRest) != 0x80; };
  return {.line = 1 + static_cast<std::size_t>(std::ranges::count(before, '\n')),
          .column = 1 + static_cast<std::size_t>(std::ranges::count_if(line, begins)),
          .reason = std::string(failure.reason)};
}

Value read_text(std::string_view text, PropertyListFault& fault) {
  property_list::Failure failure;
  Value root;
  if (!is_utf8(text)) {
    failure.at(length_of_characters(text), "this is not UTF-8");
  } else {
    root = is_xml(text) ? property_list::read_xml(text, failure)
                        : property_list::read_old(text, failure);
  }
  if (root.is_null()) {
    fault = fault_in(text, failure);
  }
  return root;
}

Value read_utf16(std::string_view bytes, ByteOrder order, PropertyListFault& fault) {
  const auto text = utf8_of_utf16(bytes, order);
  if (!text) {
    fault.reason = "it begins as UTF-16 and is not UTF-16";
  }
  return text ? read_text(*text, fault) : Value();
}

Value read_any(std::string_view file, PropertyListFault& fault) {
  constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
  if (file.starts_with("bplist")) {
    fault.reason = "the binary document is broken, or beyond the limits";
    return property_list::read_binary(file);
  }
  if (file.starts_with("\xFE\xFF")) {
    return read_utf16(file.substr(2), ByteOrder::kBigEndian, fault);
  }
  if (file.starts_with("\xFF\xFE")) {
    return read_utf16(file.substr(2), ByteOrder::kLittleEndian, fault);
  }
  return read_text(file.starts_with(kUtf8Mark) ? file.substr(kUtf8Mark.size()) : file, fault);
}

}  // namespace

std::optional<Value> read_property_list(std::string_view file) {
  PropertyListFault fault;
  return read_property_list(file, fault);
}

std::optional<Value> read_property_list(std::string_view file, PropertyListFault& fault) {
  Value root = read_any(file, fault);
  if (root.is_null()) {
    return std::nullopt;
  }
  return root;
}

}  // namespace quoll::foundation
