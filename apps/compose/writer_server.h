#pragma once

#include <string>

namespace quoll::compose {

enum class WriterEnd {
  kWritten,
  kNoRoom,
  kStopped,  ///< the server or this program was ended
  kFailed,   ///< by itself
};

struct WriterAnswer {
  WriterEnd end = WriterEnd::kStopped;
  std::string reason;  ///< one sentence, when it was not written
};

/// Writes the message files of drafts.
class WriterServer {
 public:
  /// Call it before the first thread starts. Throws `CannotCompose`.
  [[nodiscard]] static WriterServer start();
  /// Writes the draft in the folder `taken_folder` to the file `output`: its message, then its
  /// fields. Any thread may call, one at a time.
  [[nodiscard]] WriterAnswer write(int taken_folder, int output);
  /// Ends the writer, also while it writes. Any thread may call.
  void stop() noexcept;
};

}  // namespace quoll::compose
