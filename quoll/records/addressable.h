#pragma once

#include "quoll/foundation/value.h"

namespace quoll {

/// Whatever answers `mail` with an address may stand in a message's recipient lists.
class Addressable {
 public:
  Addressable() = default;
  Addressable(const Addressable&) = delete;
  Addressable& operator=(const Addressable&) = delete;

  /// The value of `mail`: a text, null, or what a dictionary held under that key.
  [[nodiscard]] virtual foundation::Value address() const = 0;

 protected:
  ~Addressable() = default;
};

}  // namespace quoll
