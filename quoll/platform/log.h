#pragma once

#include <concepts>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quoll/foundation/error.h"
#include "quoll/foundation/format.h"
#include "quoll/foundation/polymorphic.h"

namespace quoll::platform {

/// Something that is told to the system log.
struct LogEvent {
  /// What is written. It may hold line breaks and control characters; an adapter that writes lines
  /// turns them into escapes.
  std::string text;
  /// The failure that is told; none when there is none, or only the text knows it. Whoever has to
  /// know what went wrong looks here and never takes the text apart. Where staging fails as a
  /// whole, this is an error of `kQuollErrorDomain` that says which step failed
  /// (`kNotCoordinatedError`, `kNotPreparedError`); the error in the text is its `underlying`.
  std::optional<foundation::Error> error{};
};

/// The system log: one free-form line an event, without levels. Any thread may write.
class Log : public foundation::Polymorphic {
 public:
  /// Writes the text as one line.
  virtual void write(const LogEvent& event) = 0;
};

/// Writes to the installed log. The only place from which the system logs.
void log_event(const LogEvent& event);

/// The same with a text alone.
void log_line(std::string_view text);

/// The same with "OPERATION SENTENCE", where the error is known by its sentence alone.
void log_reason(std::string_view operation, const foundation::Error& error);

/// The failure that something in a log line stands for: an error itself, an exception by its
/// reason.
template <typename Argument>
std::optional<foundation::Error> failure_in(const Argument& argument) {
  if constexpr (std::same_as<Argument, foundation::Error>) {
    return argument;
  } else if constexpr (std::derived_from<Argument, std::exception>) {
    return foundation::quoll_error(foundation::kRaisedError, argument.what());
  } else {
    return std::nullopt;
  }
}

/// The same with a pattern: `log("shareInit %@", error)`. The event's error is the first argument
/// that stands for a failure.
template <typename First, typename... Rest>
void log(foundation::Pattern<1 + sizeof...(Rest)> pattern, const First& first,
         const Rest&... rest) {
  LogEvent event{foundation::format(pattern, first, rest...), failure_in(first)};
  ((event.error = event.error ? std::move(event.error) : failure_in(rest)), ...);
  log_event(event);
}

}  // namespace quoll::platform
