#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>

namespace quoll::sandbox {

/// What an argument of a system call has to be: its bits under `mask` are `value`.
struct Argument {
  unsigned index = 0;
  std::uint64_t mask = 0;
  std::uint64_t value = 0;
};

/// The argument is this number; the kernel looks at its lower half only.
constexpr Argument is(unsigned index, std::uint32_t value) {
  return {index, 0xffffffff, value};
}
/// The argument is the null pointer.
constexpr Argument is_null(unsigned index) {
  return {index, ~std::uint64_t{0}, 0};
}
/// None of these flags is in the argument, or all are.
constexpr Argument has_none_of(unsigned index, std::uint32_t flags) {
  return {index, flags, 0};
}
constexpr Argument has_all_of(unsigned index, std::uint32_t flags) {
  return {index, flags, flags};
}

/// A list of the system calls that a process can make from now on; for every other the kernel
/// answers as one that does not know it (ENOSYS), since a C library then takes the older call that
/// does the same, and calls that no kernel has yet are refused before they exist.
///
/// Calls of another architecture than the program's own, which no program makes by mistake, end it.
class CallFilter {
 public:
  CallFilter();
  CallFilter(const CallFilter&) = delete;
  CallFilter& operator=(const CallFilter&) = delete;
  ~CallFilter();

  /// By name. What this machine's architecture does not have is left out.
  void allow(std::initializer_list<const char*> calls);
  /// Allowed when all of these hold; several entries for one call are alternatives.
  void allow(const char* call, std::initializer_list<Argument> arguments);

  /// Binds the calling thread and what it starts, for good. Answers 0 or an `errno` value.
  [[nodiscard]] int enforce();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace quoll::sandbox
