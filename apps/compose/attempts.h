#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quoll::compose {

/// Notes of the attempts to write a draft, in the file `attempts` of its folder, a line each. An
/// attempt is written down before it begins. Those count in which the writer failed by itself. What
/// else ends a program is seldom the draft's fault; it is when it happens again and again.
class Attempts {
 public:
  /// `folder` must stay open. Throws `ComposeError` when the notes cannot be read.
  explicit Attempts(int folder);

  /// Answers 0 or an `errno` value: then no attempt may be made.
  [[nodiscard]] int begin();
  /// The writer ended well, or was ended from outside, and this program goes on.
  void ended();
  void failed(const std::string& reason);

  /// After three failures, or when the program has ended in five attempts one after the other, the
  /// draft is set aside.
  [[nodiscard]] bool are_enough() const;
  /// True when the program has ended in three: then other drafts come first.
  [[nodiscard]] bool are_suspicious() const;
  /// Why they are enough; else of the last failure, empty without one.
  [[nodiscard]] std::string reason() const;

 private:
  [[nodiscard]] int write() const;

  int folder_;
  std::vector<std::string> failures_;  ///< their reasons, printable
  std::size_t without_end_ = 0;        ///< attempts in which the program ended
};

}  // namespace quoll::compose
