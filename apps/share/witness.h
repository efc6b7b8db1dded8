#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "quoll/platform/log.h"

namespace quoll::share {

/// What is seen while threads work on one thing: what they log and the files that they
/// write. It is how the host learns of a share what its extension tells nobody. Any thread may
/// call.
class Witness {
 public:
  /// Makes `witness` the one of this thread, and the one before again when it goes.
  class Scope {
   public:
    explicit Scope(Witness& witness);
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope();

   private:
    Witness* before_;
  };

  Witness() = default;
  Witness(const Witness&) = delete;
  Witness& operator=(const Witness&) = delete;

  /// The witness of this thread; null when there is none.
  [[nodiscard]] static Witness* current();

  void saw(platform::LogEvent event);
  void saw_file(std::string_view path);
  [[nodiscard]] std::vector<platform::LogEvent> logged() const;
  /// The paths of the files that were written, in order.
  [[nodiscard]] std::vector<std::string> files() const;

 private:
  mutable std::mutex mutex_;
  std::vector<platform::LogEvent> logged_;
  std::vector<std::string> files_;
};

}  // namespace quoll::share
