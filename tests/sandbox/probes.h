#pragma once

#include <string>

namespace quoll::test {

/// Tries something that a sandbox is there to prevent, in this process. Answers 0 when it can be
/// done, else the `errno` value that kept it from it.
///
/// The environment says with what: QUOLL_PROBE_HOME a folder with the files "selected" and
/// "unselected" and the folder "other", QUOLL_PROBE_GROUP the group container, QUOLL_PROBE_VICTIM a
/// process, QUOLL_PROBE_SOCKET the path of a socket that listens, QUOLL_PROBE_INBOX that of one
/// that takes datagrams.
int probe(const std::string& name);

/// What a probe process writes to its standard error before it ends.
std::string probe_report(const std::string& name, int answer);

/// Tries what QUOLL_PROBE names, reports it, and ends the process.
[[noreturn]] void probe_and_end();

}  // namespace quoll::test
