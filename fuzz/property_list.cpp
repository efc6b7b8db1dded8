// Bytes from a stranger as a property list: what is read can be walked within the limits, written
// in binary, and read back as the same.

#include "quoll/foundation/property_list.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "fuzz/require.h"
#include "quoll/console/property_list_writer.h"
#include "quoll/foundation/collections.h"
#include "quoll/foundation/text.h"

namespace {

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
    } else if (const auto list = value.as_list()) {
      for (const Value& element : *list) {
        over(element, depth + 1);
      }
    } else if (const auto dictionary = value.as_dictionary()) {
      for (const auto& [key, entry] : *dictionary) {
        require(quoll::foundation::is_utf8(key));
        over(entry, depth + 1);
      }
    }
    has_nan_ = has_nan_ || (value.real() != nullptr && std::isnan(*value.real()));
  }

  /// NaN equals nothing, itself included.
  [[nodiscard]] bool has_nan() const { return has_nan_; }

 private:
  std::size_t values_ = 0;
  bool has_nan_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto root =
      quoll::foundation::read_property_list({reinterpret_cast<const char*>(data), size});
  if (root) {
    Walk walk;
    walk.over(*root, 1);
    const std::string again =
        quoll::console::write_property_list(*root, quoll::console::PropertyListForm::kBinary);
    const auto read_again = quoll::foundation::read_property_list(again);
    require(read_again.has_value());
    require(walk.has_nan() || *read_again == *root);
  }
  return 0;
}
