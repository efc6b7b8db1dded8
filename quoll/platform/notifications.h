#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "quoll/foundation/polymorphic.h"
#include "quoll/foundation/value.h"

namespace quoll::platform {

/// The notifications of one process. Any thread may call.
class NSNotificationCenter : public foundation::Polymorphic {
 public:
  using Block = std::function<void(std::string_view name, const foundation::Value& object)>;

  /// Never null.
  [[nodiscard]] static std::shared_ptr<NSNotificationCenter> defaultCenter();

  /// `postNotificationName:object:`: calls the observers on this thread, in the order in which they
  /// were added, before it returns. An observer may add and remove observers.
  virtual void postNotificationName(std::string_view name, const foundation::Value& object) = 0;

  /// Calls `block` for every notification of that name (every name when it is empty) that is posted
  /// with that very object (any object when it is null; lists and dictionaries by identity too).
  /// `observer` names who registers, for `removeObserver`, and is not looked at.
  virtual void addObserver(const void* observer, std::string_view name,
                           const foundation::Value& object, Block block) = 0;

  /// `removeObserver:`: removes everything that this observer registered; an unknown one is
  /// ignored.
  virtual void removeObserver(const void* observer) = 0;
};

/// A center that works inside this process and needs nothing else.
[[nodiscard]] std::shared_ptr<NSNotificationCenter> make_notification_center();

}  // namespace quoll::platform
