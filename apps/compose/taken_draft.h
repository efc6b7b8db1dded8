#pragma once

#include <sys/file.h>

#include <optional>
#include <string>
#include <vector>

#include "apps/compose/left_out.h"
#include "apps/compose/moment.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {

/// A draft that was taken and is worked on: the folder `taken/NAME`, which holds the command and
/// its files. It is locked while this object lives, so of several programs only one works on it.
/// Unless it was removed, kept or moved, the folder stays, and the next start goes on with it.
class TakenDraft {
 public:
  /// `folder` is the open folder, with the lock.
  TakenDraft(std::string name, posix::UniqueFd folder);

  /// Locks the draft with this name; none when another program works on it, or it is gone. Throws
  /// `ComposeError` when it cannot be locked for another reason.
  [[nodiscard]] static std::optional<TakenDraft> lock(const std::string& name);

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] std::string path() const;
  [[nodiscard]] int folder() const { return folder_.get(); }

  /// When that cannot be read, it says so in the place of a file.
  [[nodiscard]] LeftOutFiles left_out() const;

  /// Nobody tries to write it any more. Its files stay for 30 days.
  void set_aside(const std::string& reason) const;
  [[nodiscard]] bool is_aside_too_long(const Moment& now) const;

  /// Removes the folder: the draft is deleted, or was not promised to anybody. Answers 0 or an
  /// `errno` value; what is left then is a draft still, or goes at a later start.
  [[nodiscard]] int remove();

  /// The draft was written, and no client has it: moves the folder to `given`, so that the draft
  /// can be given to any client while the folder is there. Does nothing after `move_to_given`.
  /// Answers 0, or an `errno` value when it can be neither moved nor removed.
  [[nodiscard]] int keep();

  /// Moves the folder to `given`, as it is, and answers it with its lock. From then on the draft is
  /// never offered to a client by itself. Throws `ComposeError` when it cannot be moved.
  [[nodiscard]] posix::UniqueFd move_to_given();

 private:
  /// Answers an `errno` value, or 0.
  [[nodiscard]] int rename_to_given() const;

  std::string name_;
  posix::UniqueFd folder_;
};

/// The names of the drafts that wait to be written, the oldest first; none when there is no folder
/// for them. Nothing is locked or changed. Throws `ComposeError` when the folder cannot be read.
[[nodiscard]] std::vector<std::string> waiting_drafts();
/// The names of all drafts in the folder for taken ones, also of those that were set aside.
[[nodiscard]] std::vector<std::string> taken_drafts();

/// Why the draft was set aside; none when it was not. Nothing is locked.
[[nodiscard]] std::optional<std::string> why_aside(const std::string& draft);

/// The note in a draft's folder that a client was about to be started.
inline constexpr const char* kOffered = "offered";

/// Opens a folder and locks it; none with `errno` set: `EWOULDBLOCK` when another program has the
/// lock, `ENOENT` when the folder is gone.
/// With `LOCK_SH` for whoever only looks whether somebody has it.
[[nodiscard]] posix::UniqueFd locked_folder(const std::string& path, int kind = LOCK_EX);

}  // namespace quoll::compose
