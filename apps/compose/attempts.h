#pragma once

#include <string>
#include <vector>

namespace quoll::compose {

/// Notes of the attempts to write a draft, in the file `attempts` of its folder, a line each. An
/// attempt is written down before it begins, but counts only when the writer failed by itself: what
/// else ends a program is not the draft's fault.
class Attempts {
 public:
  /// `folder` must stay open. Throws `ComposeError` when the notes cannot be read.
  explicit Attempts(int folder);

  /// Answers 0 or an `errno` value: then no attempt may be made.
  [[nodiscard]] int begin();
  /// It ended well, or was ended from outside.
  void ended();
  void failed(const std::string& reason);

  /// After three failures the draft is set aside.
  [[nodiscard]] bool are_enough() const;
  /// Of the last failure; empty without one.
  [[nodiscard]] std::string reason() const;

 private:
  [[nodiscard]] int write(const char* last_line) const;

  int folder_;
  std::vector<std::string> failures_;  ///< their reasons, printable
};

}  // namespace quoll::compose
