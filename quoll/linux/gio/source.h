#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>

namespace quoll::gio {

/// Something that the default main context of this thread waits for, until this object goes. A
/// function that is called may let it go. An empty one waits for nothing.
class Source {
 public:
  Source() = default;
  /// Calls `read` whenever there is something to read or the end is met, until it answers false.
  [[nodiscard]] static Source readable(int descriptor, std::function<bool()> read);
  /// Calls `late` once.
  [[nodiscard]] static Source after(std::chrono::milliseconds time, std::function<void()> late);
  /// Calls `came` for each SIGINT, SIGTERM or SIGHUP, as the number says. A signal that is ignored
  /// stays so.
  [[nodiscard]] static Source signal(int number, std::function<void()> came);

 private:
  struct Remove {
    void operator()(GSource* source) const;
  };

  Source(GSource* source, GSourceFunc callback, std::function<bool()> happened);

  std::unique_ptr<GSource, Remove> source_;
};

}  // namespace quoll::gio
