#pragma once

#include <sys/types.h>

#include <string>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::posix {

/// A file or folder under a hidden name while it is not whole yet. It is removed again unless it is
/// placed under its own name.
///
/// It is locked while it lives, so what a killed process left behind is unlocked: making the next
/// one in the same folder removes that.
class Incoming {
 public:
  /// The hidden name lies in `folder`.
  explicit Incoming(UniqueFd folder);
  Incoming(const Incoming&) = delete;
  Incoming& operator=(const Incoming&) = delete;
  ~Incoming();

  /// Each is called once, one of them first; they answer 0 or an `errno` value.
  [[nodiscard]] int make_file(mode_t mode);
  [[nodiscard]] int make_folder();

  /// The file open for writing, or the folder open for reading.
  [[nodiscard]] int fd() const { return fd_.get(); }

  /// Gives it its name in one step; an existing entry is `EEXIST`.
  [[nodiscard]] int place(int folder, const std::string& name);
  /// Gives it a name in the folder where it was built, taking the place of an existing file.
  [[nodiscard]] int place_over(const std::string& name);

 private:
  [[nodiscard]] int make(mode_t mode, bool is_folder);

  UniqueFd folder_;
  UniqueFd fd_;
  /// Empty when there is nothing to remove.
  std::string name_;
};

/// The folder in which something on its way to `destination` is built: a hidden one of the
/// group container when the destination lies in a container and on the same file system, so that
/// nobody who lists the destination's folder sees it; else `beside`, the destination's folder. None
/// sets `errno`.
[[nodiscard]] UniqueFd open_building_folder(const std::string& destination, int beside);

}  // namespace quoll::posix
