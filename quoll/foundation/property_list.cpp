#include "quoll/foundation/property_list.h"

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

Value read_text(std::string_view text) {
  if (!is_utf8(text)) {
    return {};
  }
  return is_xml(text) ? property_list::read_xml(text) : property_list::read_old(text);
}

Value read_utf16(std::string_view bytes, ByteOrder order) {
  const auto text = utf8_of_utf16(bytes, order);
  return text ? read_text(*text) : Value();
}

Value read_any(std::string_view file) {
  constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
  if (file.starts_with("bplist")) {
    return property_list::read_binary(file);
  }
  if (file.starts_with("\xFE\xFF")) {
    return read_utf16(file.substr(2), ByteOrder::kBigEndian);
  }
  if (file.starts_with("\xFF\xFE")) {
    return read_utf16(file.substr(2), ByteOrder::kLittleEndian);
  }
  return read_text(file.starts_with(kUtf8Mark) ? file.substr(kUtf8Mark.size()) : file);
}

}  // namespace

std::optional<Value> read_property_list(std::string_view file) {
  Value root = read_any(file);
  if (root.is_null()) {
    return std::nullopt;
  }
  return root;
}

}  // namespace quoll::foundation
