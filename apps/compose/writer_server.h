#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include "apps/compose/write_message.h"
#include "quoll/linux/posix/unique_fd.h"

namespace quoll::compose {

/// How the writing of a draft ended.
enum class WriterEnd {
  kWritten,
  kNotNow,   ///< the system has no room for it, or no process; nothing is wrong with the draft
  kStopped,  ///< the writer was ended from outside; nothing is wrong with the draft
  kFailed,   ///< the writer could not write this draft, or ended by itself
};

struct WriterAnswer {
  WriterEnd end = WriterEnd::kStopped;
  std::string reason;  ///< one sentence for people; empty when it is written
};

/// The process that writes drafts. It is forked before there is any thread, and forks a child for
/// each draft, which confines itself before it reads the first byte: see `confine_writer`. So a
/// start costs no loading of libraries, and what one draft does to its writer is gone with it. The
/// server ends with the thread that started it, and the child with the server.
class WriterServer {
 public:
  /// What the child does with a folder and an output once it is confined.
  using Job = void (*)(int taken_folder, int output);

  /// How long a child may take, waiting included. One that takes longer is ended and has failed.
  static constexpr std::chrono::milliseconds kLongest = std::chrono::minutes(10);

  /// Forks. Call it from the main thread, before any other is started. When the system has no
  /// process for it, each answer will be `kNotNow`.
  [[nodiscard]] static WriterServer start(Job job = write_message,
                                          std::chrono::milliseconds longest = kLongest);

  WriterServer(WriterServer&& other) noexcept;
  WriterServer& operator=(WriterServer&&) = delete;
  ~WriterServer();

  /// Has a draft written, as `write_message` says, and waits for it. Both descriptors stay the
  /// caller's. Any thread, one at a time. Once the server has ended, each answer is `kStopped`.
  [[nodiscard]] WriterAnswer write(int taken_folder, int output);

  /// Ends the server and what it is writing; `write` answers at once. Any thread, any number of
  /// times.
  void stop() noexcept;

 private:
  WriterServer(posix::UniqueFd socket, pid_t process, int error);

  posix::UniqueFd socket_;
  pid_t process_;
  int error_;  ///< why there is no process; 0 when there is one
};

}  // namespace quoll::compose
