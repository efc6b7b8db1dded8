#pragma once

#include <chrono>
#include <string>

namespace quoll::share {

/// How far something is, for somebody at a terminal: one line, written over each time. Nothing is
/// shown in the first second, and nothing where standard error is no terminal. The line goes with
/// this object.
class TerminalLine {
 public:
  TerminalLine() = default;
  TerminalLine(const TerminalLine&) = delete;
  TerminalLine& operator=(const TerminalLine&) = delete;
  ~TerminalLine() { clear(); }

  void show(const std::string& words);
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  Clock::time_point begin_ = Clock::now();
  bool is_shown_ = false;
};

}  // namespace quoll::share
