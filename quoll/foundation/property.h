#pragma once

#include <atomic>
#include <mutex>
#include <type_traits>
#include <utility>

namespace quoll::foundation {

/// An atomic property of a record: `record.mail()` reads, `record.mail = value` sets. Each read and
/// each write is one step for every thread; several of them together are not.
///
/// Plain numbers are atomics; everything else stands behind a small lock of its own.
template <typename T>
class Property {
 public:
  Property() = default;
  explicit Property(T value) : held_(std::move(value)) {}
  Property(const Property&) = delete;
  Property& operator=(const Property&) = delete;
  ~Property() = default;

  /// A copy that stays alive for the caller whatever is set afterwards.
  [[nodiscard]] T operator()() const {
    const std::lock_guard lock(mutex_);
    return held_;
  }

  Property& operator=(T value) {
    {
      const std::lock_guard lock(mutex_);
      std::swap(held_, value);
    }
    return *this;  // what was held before is released here, outside the lock
  }

  /// Has `change` change what is held, as one step. It is called under the lock, so it must be
  /// short and must not use this property.
  template <typename Change>
  void change(const Change& change) {
    const std::lock_guard lock(mutex_);
    change(held_);
  }

 private:
  mutable std::mutex mutex_;
  T held_{};
};

template <typename T>
requires std::is_arithmetic_v<T>
class Property<T> {
 public:
  Property() = default;
  explicit Property(T value) : held_(value) {}
  Property(const Property&) = delete;
  Property& operator=(const Property&) = delete;
  ~Property() = default;

  [[nodiscard]] T operator()() const { return held_.load(); }

  Property& operator=(T value) {
    held_.store(value);
    return *this;
  }

 private:
  std::atomic<T> held_{};
};

}  // namespace quoll::foundation
