#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quoll::compose {

/// A file that a command names and that is not in the draft.
struct LeftOut {
  std::string name;  ///< as the command has it
  std::string reason;
};

/// All of them: the first hundred by name, the others counted, since a stranger may name any
/// number.
struct LeftOutFiles {
  std::vector<LeftOut> named;
  std::size_t more = 0;

  void add(LeftOut file);
  [[nodiscard]] bool empty() const { return named.empty(); }
  [[nodiscard]] std::size_t count() const { return named.size() + more; }

  /// As they are kept on the disk: name and reason, each with a zero byte at its end; then, when
  /// there are more, an empty name and their number.
  [[nodiscard]] std::string as_records() const;
  [[nodiscard]] static LeftOutFiles from_records(std::string_view records);
};

/// Logs how many there are for each reason, and no names: others may read the log.
void log_left_out(const LeftOutFiles& files);

}  // namespace quoll::compose
