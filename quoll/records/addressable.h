#pragma once

#include "quoll/foundation/value.h"

namespace quoll {

/// An object with a mail address. Only such objects may be in a message's recipient lists.
class Addressable {
 public:
  Addressable() = default;
  Addressable(const Addressable&) = delete;
  Addressable& operator=(const Addressable&) = delete;

  /// The value of `mail`: a text, null, or whatever a dictionary held under that key.
  [[nodiscard]] virtual foundation::Value address() const = 0;

 protected:
  ~Addressable() = default;
};

}  // namespace quoll
