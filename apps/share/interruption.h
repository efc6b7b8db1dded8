#pragma once

#include <array>
#include <csignal>

namespace quoll::share {

/// While it lives, a signal that asks the program to end (SIGINT, SIGTERM, SIGHUP) is only noted,
/// so that the program can remove what it has made; a second one ends it at once. A signal that is
/// ignored stays ignored. When the other end of `starter`, a pipe or a socket, is closed, that is
/// as good as SIGTERM; with -1 there is none. One at a time, while there is one thread.
class Interruption {
 public:
  explicit Interruption(int starter = -1);
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption();

  /// True once a signal has come or the starter has gone; false while there is no object.
  [[nodiscard]] static bool has_come();
  /// True while there is a starter, of whose end no waiting call is told.
  [[nodiscard]] static bool has_starter();
  /// Ends the program as the signal would have done.
  [[noreturn]] static void end_program();

 private:
  std::array<struct sigaction, 3> before_{};
};

}  // namespace quoll::share
