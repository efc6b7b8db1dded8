// Reads any bytes as a property list. A value that is read stays within the limits, is written in
// every form, and is read back as the same value as far as the form allows: the old form has only
// texts and bytes, and XML has dates of whole seconds.

#include "quoll/foundation/property_list.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "apps/console/operations/property_list_writer.h"
#include "fuzz/require.h"
#include "quoll/foundation/collections.h"
#include "quoll/foundation/exception.h"
#include "quoll/foundation/text.h"

namespace {

using quoll::console::PropertyListForm;
using quoll::foundation::Value;
using quoll::fuzz::require;

class Walk {
 public:
  void over(const Value& value, std::size_t depth) {
    require(!value.is_null() && !value.object());
    require(++values_ <= quoll::foundation::kPropertyListValues);
    require(depth <= quoll::foundation::kPropertyListDepth);
    if (const std::string* text = value.text()) {
      require(quoll::foundation::is_utf8(*text));
    } else if (const auto list = value.as<quoll::foundation::List>()) {
      for (const Value& element : list) {
        over(element, depth + 1);
      }
    } else if (const auto dictionary = value.as<quoll::foundation::Dictionary>()) {
      for (const auto& [key, entry] : dictionary) {
        require(quoll::foundation::is_utf8(key));
        over(entry, depth + 1);
      }
    }
    has_nan_ = has_nan_ || (value.real() != nullptr && std::isnan(*value.real()));
    const quoll::foundation::Date* const date = value.date();
    has_parts_of_seconds_ =
        has_parts_of_seconds_ ||
        (date != nullptr && std::trunc(date->seconds_since_1970) != date->seconds_since_1970);
  }

  /// NaN does not equal itself.
  [[nodiscard]] bool has_nan() const { return has_nan_; }
  /// XML has dates of whole seconds.
  [[nodiscard]] bool has_parts_of_seconds() const { return has_parts_of_seconds_; }

 private:
  std::size_t values_ = 0;
  bool has_nan_ = false;
  bool has_parts_of_seconds_ = false;
};

std::optional<std::string> written(const Value& root, PropertyListForm form) {
  try {
    return quoll::console::write_property_list(root, form);
  } catch (const quoll::foundation::NSException&) {
    return std::nullopt;  // a date that XML cannot hold
  }
}

void check_again(const Value& root, PropertyListForm form, const Walk& walk) {
  const auto text = written(root, form);
  require(text.has_value() || form == PropertyListForm::kXml);
  if (!text) {
    return;
  }
  const auto again = quoll::foundation::read_property_list(*text);
  require(again.has_value());
  require(written(*again, form) == text);
  const bool is_exact = form == PropertyListForm::kBinary ||
                        (form == PropertyListForm::kXml && !walk.has_parts_of_seconds());
  require(!is_exact || walk.has_nan() || *again == root);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto root =
      quoll::foundation::read_property_list({reinterpret_cast<const char*>(data), size});
  if (root) {
    Walk walk;
    walk.over(*root, 1);
    for (const auto form :
         {PropertyListForm::kXml, PropertyListForm::kBinary, PropertyListForm::kOld}) {
      check_again(*root, form, walk);
    }
  }
  return 0;
}
