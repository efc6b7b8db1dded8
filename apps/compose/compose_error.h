#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

namespace quoll::compose {

/// A reason, and behind it what to do about it, if there is something.
[[nodiscard]] inline std::string with_advice(const std::string& reason, const std::string& advice) {
  return advice.empty() ? reason : reason + "; " + advice;
}

/// Thrown when a draft cannot be made, or another request not be carried out. `what()` is one
/// sentence for people.
class ComposeError final : public std::runtime_error {
 public:
  /// `advice` speaks of commands, for whoever reads a terminal or the log.
  explicit ComposeError(std::string reason, std::string advice = "")
      : runtime_error(with_advice(reason, advice)),
        reason_(std::move(reason)),
        advice_(std::move(advice)) {}

  [[nodiscard]] const std::string& reason() const { return reason_; }
  [[nodiscard]] const std::string& advice() const { return advice_; }

 private:
  std::string reason_, advice_;
};

/// What the exception says, without advice.
[[nodiscard]] inline std::string reason_in(const std::exception& exception) {
  const auto* const error = dynamic_cast<const ComposeError*>(&exception);
  return error != nullptr ? error->reason() : exception.what();
}

}  // namespace quoll::compose
