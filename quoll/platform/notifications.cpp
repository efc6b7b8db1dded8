#include "quoll/platform/notifications.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

#include "quoll/foundation/collections.h"

namespace quoll::platform {

namespace {

using foundation::Value;

/// What makes a posted object the same object: the thing that the value refers to.
const void* identity(const Value& value) {
  if (const auto object = value.object()) {
    return object.get();
  }
  if (const auto list = value.as<foundation::List>()) {
    return list.identity();
  }
  if (const auto dictionary = value.as<foundation::Dictionary>()) {
    return dictionary.identity();
  }
  if (const std::string* text = value.text()) {
    return text;
  }
  return value.bytes();
}

struct Registration {
  std::uint64_t number;
  const void* observer;
  std::string name;
  Value object;
  NSNotificationCenter::Block block;

  [[nodiscard]] bool wants(std::string_view posted, const Value& with) const {
    return (name.empty() || name == posted) &&
           (object.is_null() ||
            (identity(object) != nullptr && identity(object) == identity(with)));
  }
};

class LocalNotificationCenter final : public NSNotificationCenter {
 public:
  void postNotificationName(std::string_view name, const Value& object) override {
    std::vector<Registration> wanted;
    {
      const std::lock_guard lock(mutex_);
      std::copy_if(
          registrations_.begin(), registrations_.end(), std::back_inserter(wanted),
          [&](const Registration& registration) { return registration.wants(name, object); });
    }
    // Called without the lock, so that an observer may add and remove observers; one that was
    // removed in the meantime is not called any more.
    for (const Registration& registration : wanted) {
      if (is_registered(registration.number)) {
        registration.block(name, object);
      }
    }
  }

  void addObserver(const void* observer, std::string_view name, const Value& object,
                   Block block) override {
    const std::lock_guard lock(mutex_);
    registrations_.push_back({++last_, observer, std::string(name), object, std::move(block)});
  }

  void removeObserver(const void* observer) override {
    // Released without the lock: what a block owns may remove observers when it goes.
    std::vector<Registration> removed;
    const std::lock_guard lock(mutex_);
    const auto first = std::stable_partition(
        registrations_.begin(), registrations_.end(),
        [&](const Registration& registration) { return registration.observer != observer; });
    removed.assign(std::move_iterator(first), std::move_iterator(registrations_.end()));
    registrations_.erase(first, registrations_.end());
  }

 private:
  bool is_registered(std::uint64_t number) {
    const std::lock_guard lock(mutex_);
    return std::any_of(
        registrations_.begin(), registrations_.end(),
        [&](const Registration& registration) { return registration.number == number; });
  }

  std::mutex mutex_;
  std::uint64_t last_ = 0;
  std::vector<Registration> registrations_;
};

}  // namespace

std::shared_ptr<NSNotificationCenter> make_notification_center() {
  return std::make_shared<LocalNotificationCenter>();
}

}  // namespace quoll::platform
