#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace quoll::foundation {

inline constexpr std::string_view NSInvalidArgumentException = "NSInvalidArgumentException";
inline constexpr std::string_view NSRangeException = "NSRangeException";

/// The platform's exception: a programming error met at run time, such as a null stored in a list
/// or an operation asked of a value of the wrong kind.
///
/// Guards catch exactly this class; whatever else is thrown passes through them.
class NSException final : public std::runtime_error {
 public:
  NSException(std::string_view name, const std::string& reason)
      : std::runtime_error(reason), name_(name) {}

  /// One of the names above.
  [[nodiscard]] const std::string& name() const& noexcept { return name_; }
  const std::string& name() const&& = delete;
  /// What went wrong, in one sentence; this is what `%@` prints.
  [[nodiscard]] std::string reason() const { return what(); }

 private:
  std::string name_;
};

[[noreturn]] inline void raise_invalid_argument(const std::string& reason) {
  throw NSException(NSInvalidArgumentException, reason);
}

[[noreturn]] inline void raise_range(const std::string& reason) {
  throw NSException(NSRangeException, reason);
}

}  // namespace quoll::foundation
