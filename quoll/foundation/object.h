#pragma once

#include <string>
#include <string_view>

#include "quoll/foundation/polymorphic.h"

namespace quoll::foundation {

/// What the factories of a class `T` hand to its constructor, which is public for
/// `std::make_shared` alone: nobody else can make one.
template <typename T>
class Passkey {
  friend T;
  explicit Passkey() = default;
};

/// The root of everything that a `Value` can hold besides plain data: records, URLs, images.
///
/// Objects are held by `std::shared_ptr`, have an identity and are never copied. What a class says
/// about its threads stands with the class.
class Object : public Polymorphic {
 public:
  /// The class's name as the system spells it, for instance "ExtensionMessage".
  [[nodiscard]] virtual std::string_view class_name() const = 0;

  /// `description`: what `%@` prints for this object.
  [[nodiscard]] virtual std::string description() const = 0;

  /// `isEqual:`. Identity unless a class says otherwise; null is equal to no object.
  [[nodiscard]] virtual bool isEqual(const Object* other) const { return this == other; }
};

}  // namespace quoll::foundation
