#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>

namespace quoll::sandbox {

/// A condition for an argument of a system call: its bits under `mask` are `value`.
struct Argument {
  unsigned index = 0;
  std::uint64_t mask = 0;
  std::uint64_t value = 0;
};

/// The argument is this number. The kernel compares its lower 32 bits only.
constexpr Argument is(unsigned index, std::uint32_t value) {
  return {index, 0xffffffff, value};
}
/// The argument is the null pointer.
constexpr Argument is_null(unsigned index) {
  return {index, ~std::uint64_t{0}, 0};
}
/// The argument has none of these flags, or all of them.
constexpr Argument has_none_of(unsigned index, std::uint32_t flags) {
  return {index, flags, 0};
}
constexpr Argument has_all_of(unsigned index, std::uint32_t flags) {
  return {index, flags, flags};
}

/// The list of system calls that a process may make from now on. Any other call fails with ENOSYS,
/// as if the kernel did not know it: then a C library uses the older call for the same purpose. So
/// calls that do not exist yet are refused too.
///
/// A call for another architecture than the program's ends the process; no program makes one by
/// mistake.
class CallFilter {
 public:
  CallFilter();
  CallFilter(const CallFilter&) = delete;
  CallFilter& operator=(const CallFilter&) = delete;
  ~CallFilter();

  /// Allows calls by name. Names that this architecture does not have are ignored.
  void allow(std::initializer_list<const char*> calls);
  /// Allows a call when all conditions hold. Several entries for one call are alternatives.
  void allow(const char* call, std::initializer_list<Argument> arguments);

  /// Applies the list to the calling thread and to what it starts, for good. Answers 0 or an
  /// `errno` value.
  [[nodiscard]] int enforce();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace quoll::sandbox
