#pragma once

namespace quoll::foundation {

/// The base of classes that are derived from, held by pointer and never copied.
class Polymorphic {
 public:
  Polymorphic() = default;
  Polymorphic(const Polymorphic&) = delete;
  Polymorphic& operator=(const Polymorphic&) = delete;
  virtual ~Polymorphic() = default;
};

}  // namespace quoll::foundation
