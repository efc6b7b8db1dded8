#pragma once

#include <span>
#include <string>

namespace quoll::test {

struct Probe {
  const char* name;
  /// True when it could be done; else `errno` says what kept it from it.
  bool (*can)();
};

std::span<const Probe> file_probes();
std::span<const Probe> process_probes();
std::span<const Probe> socket_probes();
std::span<const Probe> kernel_probes();

/// What the environment says; empty when nothing.
std::string setting(const char* variable);

}  // namespace quoll::test
