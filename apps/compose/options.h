#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quoll::compose {

/// What the command line asks for: one action, which are the members that are not at rest here.
struct Options {
  std::vector<std::string> urls;
  std::string draft;   ///< the draft to show; empty for the newest
  std::string client;  ///< the client to choose; empty for the default
  std::optional<std::string> open, ask, files, again, remove;  ///< the draft that this is done with
  bool json = false;
  double idle_seconds = 10;
  bool service = false;
  bool resume = false;
  bool list = false;
  bool show = false;
  bool clients = false;
  bool check = false;
  bool choose = false;
};

/// Reads the command line into `options`. Answers an exit status after help or wrong use, which it
/// has said.
[[nodiscard]] std::optional<int> parse(int argc, char** argv, Options& options);

}  // namespace quoll::compose
