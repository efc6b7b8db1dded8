#pragma once

#include <sys/types.h>

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace quoll::crash {

/// One thread among all that a program starts, by the order in which they are made: the program's
/// first thread is 0 of 0. What one thread calls hardly depends on how fast the others are.
struct Lane {
  int process = 0;
  int thread = 0;

  auto operator<=>(const Lane&) const = default;
};

/// Stands for all threads together.
inline constexpr Lane kEveryLane{-1, -1};

/// A system call of a traced thread that stands at its entry.
struct Call {
  pid_t thread = -1;
  pid_t process = -1;
  Lane lane;
  long number = -1;
  std::array<std::uint64_t, 6> arguments{};
  /// Where in the program it is made.
  std::uint64_t instruction = 0;
};

/// The call at whose entry the stopped thread stands; none when it stands elsewhere.
[[nodiscard]] std::optional<Call> entered_call(pid_t thread);
/// What the call answered at whose end the stopped thread stands; none when it stands elsewhere.
[[nodiscard]] std::optional<std::int64_t> ended_call(pid_t thread);

/// Turns the call at whose entry the thread stands into one that does nothing.
void make_void(pid_t thread);
/// Changes an argument of the call at whose entry the thread stands.
void set_argument(pid_t thread, std::size_t index, std::uint64_t value);
/// Changes what the call answers at whose end the thread stands: a count, or a negated `errno`.
void set_result(pid_t thread, std::int64_t result);

}  // namespace quoll::crash
